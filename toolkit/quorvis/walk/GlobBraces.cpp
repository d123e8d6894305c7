#include "toolkit/quorvis/walk/GlobBraces.h"

#include <algorithm>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMostAlternatives = 64;
constexpr int kDeepest = 16;

// The length of the set that stands at the start of `text`, "[a-z]" or "[]a]"; 1 when it is not closed.
std::size_t lengthOfSet(std::string_view text) {
    std::size_t end = text.substr(0, 2) == "[!" ? 2 : 1;
    if (end < text.size() && text[end] == ']') ++end;
    for (; end < text.size(); ++end) {
        if (text[end] == '\\')
            ++end;
        else if (text[end] == ']')
            return end + 1;
    }
    return 1;
}

class Expansion {
  public:
    explicit Expansion(std::string_view pattern) : rest_(pattern) {}

    std::vector<std::string> all() {
        std::vector<std::string> texts = sequence(0);
        if (problem_.empty() && !rest_.empty()) problem_ = "a \"}\" closes nothing";
        return texts;
    }
    std::string takeProblem() { return std::move(problem_); }

  private:
    // Up to the end, or inside of braces up to "," or "}".
    std::vector<std::string> sequence(int depth) {
        std::vector<std::string> texts(1);
        while (problem_.empty() && !rest_.empty()) {
            const char next = rest_.front();
            if (next == '}' || (next == ',' && depth > 0)) break;
            if (next == '{') {
                appendEach(texts, group(depth + 1));
                continue;
            }
            const std::size_t length = lengthOfPlain(next);
            for (std::string& text : texts) text.append(rest_.substr(0, length));
            rest_.remove_prefix(std::min(length, rest_.size()));
        }
        return texts;
    }

    // Of what stands for itself at the start of the rest, however it is meant.
    std::size_t lengthOfPlain(char next) const {
        if (next == '[') return lengthOfSet(rest_);
        if (next == '\\') return 2;
        return std::max<std::size_t>(1, std::min(rest_.find_first_of("\\[{},"), rest_.size()));
    }

    std::vector<std::string> group(int depth) {
        std::vector<std::string> texts;
        if (depth > kDeepest) problem_ = "braces stand inside of each other too often";
        do {
            rest_.remove_prefix(1);
            for (std::string& text : sequence(depth)) texts.push_back(std::move(text));
            if (texts.size() > kMostAlternatives) problem_ = tooMany();
        } while (problem_.empty() && !rest_.empty() && rest_.front() == ',');
        if (problem_.empty() && rest_.empty()) problem_ = "a \"{\" is not closed";
        if (problem_.empty()) rest_.remove_prefix(1);
        return texts;
    }

    void appendEach(std::vector<std::string>& texts, const std::vector<std::string>& endings) {
        if (texts.size() * endings.size() > kMostAlternatives) problem_ = tooMany();
        if (!problem_.empty()) return;
        std::vector<std::string> longer;
        for (const std::string& text : texts) {
            for (const std::string& ending : endings) longer.push_back(text + ending);
        }
        texts = std::move(longer);
    }

    static std::string tooMany() {
        return "the braces stand for more than " + std::to_string(kMostAlternatives) + " texts";
    }

    std::string_view rest_;
    std::string problem_;
};

}  // namespace

std::vector<std::string> withoutBraces(std::string_view pattern, std::string& problem) {
    if (pattern.find('{') == std::string_view::npos && pattern.find('}') == std::string_view::npos)
        return {std::string(pattern)};
    Expansion expansion(pattern);
    std::vector<std::string> texts = expansion.all();
    problem = expansion.takeProblem();
    if (!problem.empty()) texts.clear();
    return texts;
}

}  // namespace toolkit::quorvis
