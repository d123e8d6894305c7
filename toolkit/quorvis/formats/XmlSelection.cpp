#include <algorithm>
#include <charconv>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/formats/XmlReader.h"

namespace toolkit::quorvis {

namespace {

using Test = XmlSelection::Test;
using Step = XmlSelection::Step;

constexpr std::size_t kMaxTests = 16;  // of a step

// Whether the text can be the name of an element or attribute. Refuses the special characters of other pattern languages.
bool isName(std::string_view text) {
    return !text.empty() && text.find_first_of("@[]*?{}='\"") == std::string_view::npos;
}

// The position of the first of these characters that is not between quotes.
std::size_t findUnquoted(std::string_view text, char wanted) {
    char quote = '\0';
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (quote == '\0' && c == wanted) return at;
        if (quote != '\0') {
            if (c == quote) quote = '\0';
        } else if (c == '\'' || c == '"') {
            quote = c;
        }
    }
    return std::string_view::npos;
}

// "2", "@name='value'" or "name='value'"
bool parseTest(std::string_view text, Test& test) {
    const std::size_t separator = text.find('=');
    if (separator == std::string_view::npos) {
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, test.position);
        return error == std::errc() && stop == end && test.position > 0;
    }
    test.kind = text.starts_with('@') ? Test::Kind::Attribute : Test::Kind::Child;
    test.name = text.substr(text.starts_with('@') ? 1 : 0, separator - (text.starts_with('@') ? 1 : 0));
    const std::string_view quoted = text.substr(separator + 1);
    if (!isName(test.name) || quoted.size() < 2) return false;
    const char quote = quoted.front();
    if ((quote != '\'' && quote != '"') || quoted.find(quote, 1) != quoted.size() - 1) return false;
    test.value = quoted.substr(1, quoted.size() - 2);
    return true;
}

// "name", "*" or either with tests: "name[@kind='x'][2]"
bool parseStep(std::string_view text, Step& step) {
    std::size_t bracket = text.find('[');
    step.name = text.substr(0, bracket);
    step.any = step.name == "*";
    if (!step.any && !isName(step.name)) return false;
    std::string_view rest = bracket == std::string_view::npos ? std::string_view() : text.substr(bracket);
    while (!rest.empty()) {
        const std::size_t end = findUnquoted(rest, ']');
        if (rest.front() != '[' || end == std::string_view::npos) return false;
        // The position among elements with a child is known only at their end.
        const bool afterChild = !step.tests.empty() && step.tests.back().kind == Test::Kind::Child;
        if (step.tests.size() == kMaxTests || !parseTest(rest.substr(1, end - 1), step.tests.emplace_back()))
            return false;
        if (afterChild && step.tests.back().kind != Test::Kind::Child) return false;
        rest.remove_prefix(end + 1);
    }
    return true;
}

// Follows the steps during parsing.
class Selector : public XmlEvents {
  public:
    Selector(const XmlSelection& selection, std::size_t limit)
        : selection_(selection), limit_(limit), states_(selection.steps.size()) {
        for (std::size_t i = 0; i < states_.size(); ++i)
            states_[i].counts.resize(selection.steps[i].tests.size());
    }

    // Elements that a damage has cut off may still lack a child that a test wants.
    SelectedValues takeSelected() {
        for (std::size_t i = matched_; i-- > 0;) {
            if (!hasChildren(i)) selected_.values.resize(states_[i].firstValue);
        }
        return std::move(selected_);
    }

    void start(std::string_view name, const XmlAttributes& attributes) override {
        const std::size_t parent = depth_++;
        if (parent > matched_) return;
        if (parent > 0) beginChild(name, parent - 1);
        if (parent != matched_ || matched_ == states_.size()) return;
        if (!passes(name, attributes)) return;
        State& state = states_[matched_++];
        state.firstValue = selected_.values.size();
        state.passed = 0;
        if (matched_ < states_.size()) {
            std::ranges::fill(states_[matched_].counts, 0);
        } else if (!selection_.attribute.empty()) {
            if (const auto value = attributes.find(selection_.attribute)) add(*value);
        }
    }

    void end() override {
        if (childOf_ && depth_ == *childOf_ + 2) endChild();
        if (matched_ == depth_) {
            const bool last = matched_ == states_.size();
            --matched_;
            const bool keeps = hasChildren(matched_);
            if (!keeps) selected_.values.resize(states_[matched_].firstValue);
            if (last && selection_.attribute.empty()) {
                if (keeps) add(trimmed(text_));
                text_.clear();
            }
        }
        --depth_;
    }

    void text(std::string_view text) override {
        if (childOf_ && depth_ == *childOf_ + 2) append(childText_, text);
        const bool wanted = matched_ == states_.size() && depth_ == matched_ && selection_.attribute.empty();
        if (wanted) append(text_, text);
    }

  private:
    // The state of a step whose element is open.
    struct State {
        std::vector<std::size_t> counts;  // per test for a position: how many siblings came to it
        std::size_t firstValue = 0;       // number of values before the element
        std::uint32_t passed = 0;         // a bit for each test for a child
    };

    static void append(std::string& all, std::string_view text) {
        if (all.size() >= kMaxValueSize) return;
        // Leading white space does not count towards the limit.
        all.append(all.empty() ? text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()))
                               : text);
        if (all.size() > kMaxValueSize) all.resize(kMaxValueSize);
    }

    // Whether the element passes the step after those that matched, except for its children.
    bool passes(std::string_view name, const XmlAttributes& attributes) {
        const Step& step = selection_.steps[matched_];
        if (!step.any && name != step.name) return false;
        for (std::size_t i = 0; i < step.tests.size(); ++i) {
            const Test& test = step.tests[i];
            if (test.kind == Test::Kind::Position && ++states_[matched_].counts[i] != test.position)
                return false;
            if (test.kind == Test::Kind::Attribute && attributes.find(test.name) != test.value) return false;
        }
        return true;
    }

    void beginChild(std::string_view name, std::size_t step) {
        const auto isNamed = [name](const Test& test) {
            return test.kind == Test::Kind::Child && test.name == name;
        };
        if (!std::ranges::any_of(selection_.steps[step].tests, isNamed)) return;
        childOf_ = step;
        childName_ = name;
        childText_.clear();
    }

    void endChild() {
        const std::vector<Test>& tests = selection_.steps[*childOf_].tests;
        for (std::size_t i = 0; i < tests.size(); ++i) {
            if (tests[i].kind == Test::Kind::Child && tests[i].name == childName_ &&
                tests[i].value == trimmed(childText_))
                states_[*childOf_].passed |= 1U << i;
        }
        childOf_.reset();
    }

    // Whether the element of this step has had all children that its tests want.
    bool hasChildren(std::size_t step) const {
        const std::vector<Test>& tests = selection_.steps[step].tests;
        for (std::size_t i = 0; i < tests.size(); ++i) {
            if (tests[i].kind == Test::Kind::Child && (states_[step].passed >> i & 1U) == 0) return false;
        }
        return true;
    }

    void add(std::string_view value) {
        if (selected_.values.size() == limit_) {
            selected_.tooMany = true;
        } else {
            selected_.values.emplace_back(value.substr(0, kMaxValueSize));
        }
    }

    const XmlSelection& selection_;
    std::size_t limit_;
    std::vector<State> states_;
    std::size_t depth_ = 0;
    std::size_t matched_ = 0;  // the number of open elements, from the root, that match the steps
    std::string text_;
    // The child that a test wants and that is open: the step of its parent, its name and text.
    std::optional<std::size_t> childOf_;
    std::string childName_;
    std::string childText_;
    SelectedValues selected_;
};

}  // namespace

std::optional<XmlSelection> XmlSelection::parse(std::string_view text, std::string& problem) {
    XmlSelection selection;
    if (text.starts_with('/')) text.remove_prefix(1);
    while (!text.empty()) {
        const std::size_t end = findUnquoted(text, '/');
        const bool last = end == std::string_view::npos;
        const std::string_view part = text.substr(0, end);
        text.remove_prefix(last ? text.size() : end + 1);
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
