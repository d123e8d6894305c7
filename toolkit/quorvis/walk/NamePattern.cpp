#include "toolkit/quorvis/walk/NamePattern.h"

#include <algorithm>

namespace toolkit::quorvis {

namespace {

// The bytes of the UTF-8 character at `position`.
std::size_t lengthOfCharacter(std::string_view name, std::size_t position) {
    std::size_t end = position + 1;
    if (static_cast<unsigned char>(name[position]) < 0xC0) return 1;
    while (end < name.size() && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) ++end;
    return end - position;
}

}  // namespace

// The set whose "[" stands at `position`, which is moved to its "]".
NamePattern::Token NamePattern::readSet(std::string_view pattern, std::size_t& position) {
    Token token;
    token.kind = Kind::Set;
    if (pattern[++position] == '!') {
        token.negated = true;
        ++position;
    }
    const auto takeCharacter = [&] {
        if (pattern[position] == '\\') ++position;
        return static_cast<unsigned char>(pattern[position++]);
    };
    do {
        const unsigned first = takeCharacter();
        unsigned last = first;
        if (pattern[position] == '-' && pattern[position + 1] != ']') {
            ++position;
            last = takeCharacter();
        }
        for (unsigned c = first; c <= last; ++c) token.bytes.set(c);
    } while (pattern[position] != ']');
    return token;
}

NamePattern::NamePattern(std::string_view pattern) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        Token token;
        if (pattern[i] == '[')
            token = readSet(pattern, i);
        else if (pattern[i] == '*')
            token.kind = Kind::Star;
        else if (pattern[i] == '?')
            token.kind = Kind::Character;
        else
            token.byte = pattern[i] == '\\' ? pattern[++i] : pattern[i];
        middle_.push_back(token);
    }
    const auto special = [](const Token& token) { return token.kind != Kind::Byte; };
    const auto begin = std::ranges::find_if(middle_, special);
    const auto end = std::find_if(middle_.rbegin(), middle_.rend(), special).base();
    for (auto token = middle_.begin(); token != begin; ++token) prefix_.push_back(token->byte);
    for (auto token = std::max(begin, end); token != middle_.end(); ++token) suffix_.push_back(token->byte);
    middle_.erase(std::max(begin, end), middle_.end());
    middle_.erase(middle_.begin(), begin);
}

// How many bytes at `position` the token stands for; 0 when it does not match there.
std::size_t NamePattern::taken(const Token& token, std::string_view name, std::size_t position) {
    if (position >= name.size()) return 0;
    if (token.kind == Kind::Byte) return name[position] == token.byte ? 1 : 0;
    if (token.kind == Kind::Character) return lengthOfCharacter(name, position);
    const auto byte = static_cast<unsigned char>(name[position]);
    const bool in = byte < token.bytes.size() && token.bytes.test(byte);
    return in == token.negated ? 0 : lengthOfCharacter(name, position);
}

bool NamePattern::middleMatches(std::string_view name) const {
    std::size_t position = 0;
    std::size_t index = 0;
    std::size_t star = std::string_view::npos;  // the latest star, and where what it stands for ends so far
    std::size_t starEnd = 0;
    while (position < name.size() || index < middle_.size()) {
        if (index < middle_.size() && middle_[index].kind == Kind::Star) {
            star = index++;
            starEnd = position;
            if (index == middle_.size()) return true;
            continue;
        }
        const std::size_t length = index < middle_.size() ? taken(middle_[index], name, position) : 0;
        if (length > 0) {
            position += length;
            ++index;
            continue;
        }
        if (star == std::string_view::npos || starEnd >= name.size()) return false;
        starEnd += lengthOfCharacter(name, starEnd);
        position = starEnd;
        index = star + 1;
    }
    return true;
}

bool NamePattern::matches(std::string_view name) const {
    if (name.size() < prefix_.size() + suffix_.size() || !name.starts_with(prefix_) ||
        !name.ends_with(suffix_))
        return false;
    return middleMatches(name.substr(prefix_.size(), name.size() - prefix_.size() - suffix_.size()));
}

}  // namespace toolkit::quorvis
