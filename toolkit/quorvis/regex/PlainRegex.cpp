#include "toolkit/quorvis/regex/PlainRegex.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kLongest = 256;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAnyOf(std::string_view characters, char c) {
    return characters.find(c) != std::string_view::npos;
}

class Scanner {
  public:
    explicit Scanner(std::string_view pattern) : rest_(pattern) {}

    std::optional<int> groups() {
        while (!rest_.empty()) {
            if (!takeOne()) return std::nullopt;
        }
        return open_ == 0 ? std::optional(groups_) : std::nullopt;
    }

  private:
    bool takeOne() {
        const char c = take();
        switch (c) {
            case '(':
                return takeOpening();
            case ')':
                repeatable_ = true;
                return open_-- > 0;
            case '[':
                repeatable_ = true;
                return takeClass();
            case '\\':
                repeatable_ = true;
                return takeEscape();
            case '^':
            case '$':
            case '|':
                repeatable_ = false;
                return true;
            case '*':
            case '+':
            case '?':
                return takeRepetition();
            default:
                repeatable_ = true;
                return c >= ' ' && c <= '~' && !isAnyOf("]{}", c);
        }
    }

    bool takeOpening() {
        ++open_;
        repeatable_ = false;
        if (rest_.starts_with("?:")) {
            rest_.remove_prefix(2);
        } else {
            ++groups_;
        }
        return !rest_.starts_with('?');
    }

    bool takeRepetition() {
        const bool allowed = repeatable_;
        repeatable_ = false;
        if (rest_.starts_with('?')) take();  // as few as possible
        return allowed;
    }

    bool takeEscape() { return !rest_.empty() && isAnyOf("dDsSwW.-+*?()[]{}^$|/\\\"'", take()); }

    // Single characters, ranges of letters or digits, and escapes.
    bool takeClass() {
        if (rest_.starts_with('^')) take();
        if (rest_.starts_with(']')) return false;
        while (!rest_.empty()) {
            const char c = take();
            if (c == ']') return true;
            const bool plain = isLetter(c) || isDigit(c);
            if (plain && rest_.starts_with('-')) {
                if (!takeRangeEnd(c)) return false;
            } else if (c == '\\') {
                if (!takeEscape() || rest_.starts_with('-')) return false;
            } else if (!plain && (!isAnyOf(" ._/,;=~+", c) || rest_.starts_with('-'))) {
                return false;
            }
        }
        return false;
    }

    bool takeRangeEnd(char first) {
        take();
        if (rest_.empty()) return false;
        const char last = take();
        const bool alike = (isDigit(first) && isDigit(last)) || (isLetter(first) && isLetter(last));
        return alike && first <= last && !rest_.starts_with('-');
    }

    char take() {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    std::string_view rest_;
    int open_ = 0;
    int groups_ = 0;
    bool repeatable_ = false;
};

}  // namespace

std::optional<int> groupsOfPlainRegex(std::string_view pattern) {
    if (pattern.size() > kLongest) return std::nullopt;
    return Scanner(pattern).groups();
}

}  // namespace toolkit::quorvis
