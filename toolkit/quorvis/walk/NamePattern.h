#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// A name with wildcards, as GlobPattern.h has them.
class NamePattern {
  public:
    // Of a proper pattern.
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
    static std::size_t taken(const Token& token, std::string_view name, std::size_t position);
    bool middleMatches(std::string_view name) const;
    static Token readSet(std::string_view pattern, std::size_t& position);

    std::string prefix_;
    std::string suffix_;
    std::vector<Token> middle_;
};

}  // namespace toolkit::quorvis
