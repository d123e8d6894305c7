#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/walk/NamePattern.h"

namespace toolkit::quorvis {

// Patterns of paths: absolute; within one name `*` stands for any characters, `?` for one, `[a-z_]` for one of these and
// `[!a-z]` for one that is none of these; `**` as a whole name for any number of directories, none too, and at the
// end for everything below; `{a,b}` for either text, which may hold slashes and braces. A backslash takes the meaning
// from the character behind it. A leading dot is nothing special. Empty names count for nothing: "/a//b/" is "/a/b".

// What is wrong with a pattern, in words; none when it is one.
std::optional<std::string> problemOfPattern(std::string_view pattern);

// The value as a piece of a pattern that stands for nothing but this value.
std::string quotedForPattern(std::string_view value);

// One step of a pattern.
struct GlobStep {
    enum class Kind : std::uint8_t { Literal, Wildcard, AnyDepth };
    Kind kind = Kind::Literal;
    std::string text;  // of a literal the name itself, of a wildcard the pattern
};
using GlobSteps = std::vector<GlobStep>;

// The alternatives that a proper pattern stands for, without braces. None ends in AnyDepth.
std::vector<GlobSteps> stepsOf(std::string_view pattern);

// The same of any text; returns what is wrong with it.
std::optional<std::string> readPattern(std::string_view pattern, std::vector<GlobSteps>& alternatives);

// Whether a "**" stands below no directory of a fixed name.
bool searchesWholeTree(const std::vector<GlobSteps>& alternatives);

// Tells for single paths whether a pattern matches them.
class PathPattern {
  public:
    // Of a proper pattern.
    explicit PathPattern(std::string_view pattern);

    bool matches(std::string_view path) const;

  private:
    struct Step {
        GlobStep::Kind kind{};
        std::string literal;
        std::optional<NamePattern> wildcard;
    };
    using Steps = std::vector<Step>;
    static bool matchFrom(const Steps& steps, std::size_t step, std::string_view path);

    std::vector<Steps> alternatives_;
};

}  // namespace toolkit::quorvis
