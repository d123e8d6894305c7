#include <algorithm>
#include <nlohmann/json.hpp>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/PropertyFormats.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kDeepest = 64;
constexpr std::size_t kMostBytes = std::size_t{64} << 10;

using Json = nlohmann::json;

// Whoever compares or reports a value has no use for an endless one.
std::optional<std::string> cut(std::optional<std::string> value) {
    if (value && value->size() > kMostBytes) value->resize(kMostBytes);
    return value;
}

// "~1" stands for a slash and "~0" for a tilde.
std::string withoutTildes(std::string_view step) {
    std::string name;
    for (std::size_t i = 0; i < step.size(); ++i) {
        const bool escape =
            step[i] == '~' && i + 1 < step.size() && (step[i + 1] == '0' || step[i + 1] == '1');
        name += escape ? (step[++i] == '1' ? '/' : '~') : step[i];
    }
    return name;
}

std::vector<std::string> stepsOf(std::string_view key) {
    const bool pointer = key.starts_with('/');
    if (pointer) key.remove_prefix(1);
    std::vector<std::string> steps;
    const char separator = pointer ? '/' : '.';
    const auto count = std::ranges::count(key, separator);
    for (std::ptrdiff_t i = 0; i <= count; ++i) {
        const std::string_view step = takeField(key, separator);
        steps.push_back(pointer ? withoutTildes(step) : std::string(step));
    }
    return steps;
}

// Finds the value while the parser goes through the document, which is never held as a whole.
class Finder : public Json::json_sax_t {
  public:
    Finder(std::vector<std::string> steps, const Tick& tick) : steps_(std::move(steps)), tick_(tick) {}

    JsonValue takeFound() { return std::move(found_); }

    bool null() override { return scalar(std::nullopt); }
    bool boolean(bool value) override { return scalar(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return scalar(std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return scalar(std::to_string(value)); }
    // As it is written: 1.10 is a version too.
    bool number_float(number_float_t /*value*/, const string_t& text) override { return scalar(text); }
    bool string(string_t& text) override { return scalar(text); }
    bool binary(binary_t& /*value*/) override { return false; }

    bool start_object(std::size_t /*count*/) override { return open(false); }
    bool key(string_t& name) override {
        step_ = name;
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t /*count*/) override { return open(true); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t position, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        found_.damage = position;
        return false;
    }

  private:
    struct Container {
        bool array;
        bool onTheWay;  // to the value
        std::size_t index = 0;
    };

    // Whether the value that comes now is the one that the steps so far lead to.
    bool onTheWay() const {
        if (open_.empty()) return true;
        const Container& parent = open_.back();
        if (!parent.onTheWay || open_.size() > steps_.size()) return false;
        const std::string& wanted = steps_[open_.size() - 1];
        return parent.array ? wanted == std::to_string(parent.index) : wanted == step_;
    }

    void passValue() {
        if (tick_) tick_();
        if (!open_.empty()) ++open_.back().index;
    }

    bool scalar(std::optional<std::string> value) {
        if (open_.size() == steps_.size() && onTheWay()) found_.value = cut(std::move(value));
        passValue();
        return true;
    }

    bool open(bool array) {
        if (open_.size() == steps_.size() && onTheWay()) found_.value.reset();
        if (open_.size() == kDeepest) {
            found_.damage = 0;
            return false;
        }
        open_.push_back({array, onTheWay()});
        return true;
    }

    bool close() {
        open_.pop_back();
        passValue();
        return true;
    }

    std::vector<std::string> steps_;
    const Tick& tick_;
    std::vector<Container> open_;
    std::string step_;
    JsonValue found_;
};

}  // namespace

JsonValue jsonValue(std::string_view text, std::string_view key, const Tick& tick) {
    Finder finder(stepsOf(key), tick);
    Json::sax_parse(text.begin(), text.end(), &finder);
    return finder.takeFound();
}

}  // namespace toolkit::quorvis
