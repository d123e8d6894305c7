#include "toolkit/quorvis/formats/FormatReaders.h"

#include <algorithm>
#include <charconv>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/XmlReader.h"

namespace toolkit::quorvis {

namespace {

// Whether the text can be the name of an element or attribute. Refuses the special characters of other pattern languages.
bool isName(std::string_view text) {
    return !text.empty() && text.find_first_of("@[]*?{}") == std::string_view::npos;
}

// "name" or "name[2]"
bool parseStep(std::string_view text, XmlSelection::Step& step) {
    const std::size_t bracket = text.find('[');
    step.name = text.substr(0, bracket);
    if (!isName(step.name)) return false;
    if (bracket == std::string_view::npos) return true;
    if (text.size() < bracket + 3) return false;
    const char* const end = text.data() + text.size() - 1;
    const auto [stop, error] = std::from_chars(text.data() + bracket + 1, end, step.number);
    return error == std::errc() && stop == end && *end == ']' && step.number > 0;
}

// Follows the steps during parsing.
class Selector : public XmlEvents {
  public:
    Selector(const XmlSelection& selection, std::size_t limit)
        : selection_(selection), limit_(limit), counts_(selection.steps.size()) {}

    SelectedValues takeSelected() { return std::move(selected_); }

    void start(std::string_view name, const XmlAttributes& attributes) override {
        const bool parentMatches = depth_ == matched_;
        ++depth_;
        if (!parentMatches || matched_ == counts_.size()) return;
        const XmlSelection::Step& step = selection_.steps[matched_];
        if (name != step.name) return;
        const std::size_t number = ++counts_[matched_];
        if (step.number != 0 && step.number != number) return;
        ++matched_;
        if (matched_ < counts_.size()) {
            counts_[matched_] = 0;
        } else if (!selection_.attribute.empty()) {
            if (const auto value = attributes.find(selection_.attribute)) add(*value);
        }
    }

    void end() override {
        if (matched_ == depth_) {
            if (matched_ == counts_.size() && selection_.attribute.empty()) {
                add(trimmed(text_));
                text_.clear();
            }
            --matched_;
        }
        --depth_;
    }

    void text(std::string_view text) override {
        const bool wanted = matched_ == counts_.size() && depth_ == matched_ && selection_.attribute.empty();
        if (!wanted || text_.size() >= kMaxValueSize) return;
        // Leading white space does not count towards the limit.
        text_.append(text_.empty() ? text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()))
                                   : text);
        if (text_.size() > kMaxValueSize) text_.resize(kMaxValueSize);
    }

  private:
    void add(std::string_view value) {
        if (selected_.values.size() == limit_) {
            selected_.tooMany = true;
        } else {
            selected_.values.emplace_back(value.substr(0, kMaxValueSize));
        }
    }

    const XmlSelection& selection_;
    std::size_t limit_;
    std::vector<std::size_t> counts_;  // per step: the number of elements with its name in the current parent
    std::size_t depth_ = 0;
    std::size_t matched_ = 0;  // the number of open elements, from the root, that match the steps
    std::string text_;
    SelectedValues selected_;
};

}  // namespace

std::optional<XmlSelection> XmlSelection::parse(std::string_view text, std::string& problem) {
    XmlSelection selection;
    if (text.starts_with('/')) text.remove_prefix(1);
    while (!text.empty()) {
        const bool last = text.find('/') == std::string_view::npos;
        const std::string_view part = takeField(text, '/');
        if (last && part.starts_with('@') && isName(part.substr(1)) && !selection.steps.empty()) {
            selection.attribute = part.substr(1);
        } else if ((!last && text.empty()) || !parseStep(part, selection.steps.emplace_back())) {
            problem = "wrong step \"" + std::string(part) + "\"";
            return std::nullopt;
        }
    }
    if (!selection.steps.empty()) return selection;
    problem = "no step";
    return std::nullopt;
}

SelectedValues selectValues(std::string_view document, const XmlSelection& selection, std::size_t limit,
                            const ProgressCheck& checkProgress) {
    Selector selector(selection, limit);
    std::optional<std::string> problem = readXml(document, selector, checkProgress);
    SelectedValues selected = selector.takeSelected();
    selected.problem = std::move(problem);
    return selected;
}

}  // namespace toolkit::quorvis
