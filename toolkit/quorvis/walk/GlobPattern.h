// Patterns of paths. They are absolute. Within one name, `*` matches any characters, `?` one character, `[a-z_]` one of
// these, and `[!a-z]` one that is not one of these. `**` as a whole name matches any number of directories, also none; at
// the end it matches everything below. `{a,b}` matches either text; the texts may hold slashes and braces. A backslash
// makes the next character match itself only. A leading dot is not special. Empty names are ignored: "/a//b/" is "/a/b".
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// One step of a pattern.
struct GlobStep {
    enum class Kind : std::uint8_t { Literal, Wildcard, AnyDepth };
    Kind kind = Kind::Literal;
    std::string text;  // the name of a literal, the pattern of a wildcard
};
using GlobSteps = std::vector<GlobStep>;

// Parses a pattern into its alternatives without braces, none of which ends in AnyDepth. Returns what is wrong with the
// pattern; none when it is valid.
std::optional<std::string> parsePattern(std::string_view pattern, std::vector<GlobSteps>& alternatives);
// The same without the alternatives.
std::optional<std::string> problemOfPattern(std::string_view pattern);

// Whether a "**" has no directory with a fixed name above it.
bool searchesWholeTree(const std::vector<GlobSteps>& alternatives);

// The value with escapes, so that as a part of a pattern it matches itself only.
std::string quotedForPattern(std::string_view value);

// Matches single names with a Wildcard step.
class NamePattern {
  public:
    // REQUIRES: the pattern is that of a step.
    explicit NamePattern(std::string_view pattern);

    bool matches(std::string_view name) const;

    // What every match begins and ends with. They do not overlap in a match.
    const std::string& prefix() const { return prefix_; }
    const std::string& suffix() const { return suffix_; }
    // Whether it is "*", which matches everything.
    bool any() const {
        return prefix_.empty() && suffix_.empty() && middle_.size() == 1 && middle_[0].kind == Kind::Star;
    }

  private:
    enum class Kind : std::uint8_t { Byte, Character, Set, Star };
    struct Token {
        Kind kind = Kind::Byte;
        char byte = 0;           // of kind Byte
        bool negated = false;    // of kind Set
        std::bitset<128> bytes;  // of kind Set
    };
    static std::size_t matchedBytes(const Token& token, std::string_view name, std::size_t position);
    bool middleMatches(std::string_view name) const;
    static Token parseSet(std::string_view pattern, std::size_t& position);

    std::string prefix_;
    std::string suffix_;
    std::vector<Token> middle_;
};

// Matches whole paths with a pattern.
class PathPattern {
  public:
    // REQUIRES: the pattern is valid.
    explicit PathPattern(std::string_view pattern);

    bool matches(std::string_view path) const;

  private:
    struct Step {
        GlobStep::Kind kind{};
        std::string literal;
        std::optional<NamePattern> wildcard;
    };
    using Steps = std::vector<Step>;
    static bool matchBelow(const Steps& steps, std::size_t step, std::string_view path);
    static bool matchFrom(const Steps& steps, std::size_t step, std::string_view path);

    std::vector<Steps> alternatives_;
};

// What a walk knows of a file that it found by a path without links.
struct WalkedFile {
    bool known = false;      // only of files and directories, and not of mount points
    std::uint32_t mode = 0;  // with the type
    std::uint32_t owner = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // seconds since 1970
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

// What to look for in the tree of files.
struct GlobRequest {
    std::string pattern;    // absolute, as the language defines it
    unsigned maxDepth = 0;  // levels below the pattern's fixed directories; 0 for the setting's
    std::string exclude;    // a pattern of paths that are skipped; empty for none
};

struct GlobHits {
    std::vector<std::string> paths;  // sorted by bytes; several paths may lead to one file
    std::vector<WalkedFile> files;   // by path
    bool incomplete = false;
    std::vector<Event> events;
};

}  // namespace toolkit::quorvis
