#include <algorithm>
#include <nlohmann/json.hpp>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxDepth = 64;
constexpr std::size_t kMaxTextSize = std::size_t{64} << 10;

using Json = nlohmann::json;

// Limits the size of a value.
std::optional<std::string> cut(std::optional<std::string> value) {
    if (value && value->size() > kMaxTextSize) value->resize(kMaxTextSize);
    return value;
}

// Replaces the escapes of JSON pointers: "~1" is a slash and "~0" is a tilde.
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

// Finds the value during parsing, so that no tree of the document is needed.
class Finder : public Json::json_sax_t {
  public:
    Finder(std::vector<std::string> steps, const ProgressCheck& checkProgress)
        : steps_(std::move(steps)), checkProgress_(checkProgress) {}

    JsonValue takeFound() { return std::move(found_); }

    bool null() override { return scalar(std::nullopt); }
    bool boolean(bool value) override { return scalar(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return scalar(std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return scalar(std::to_string(value)); }
    // The text is kept, because 1.10 may be a version.
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
        bool onPath;  // whether the path to the value leads through it
        std::size_t index = 0;
    };

    // Whether the path to the wanted value leads to or through the next value.
    bool onPath() const {
        if (open_.empty()) return true;
        const Container& parent = open_.back();
        if (!parent.onPath || open_.size() > steps_.size()) return false;
        const std::string& wanted = steps_[open_.size() - 1];
        return parent.array ? wanted == std::to_string(parent.index) : wanted == step_;
    }

    void passValue() {
        if (checkProgress_) checkProgress_();
        if (!open_.empty()) ++open_.back().index;
    }

    bool scalar(std::optional<std::string> value) {
        if (open_.size() == steps_.size() && onPath()) found_.value = cut(std::move(value));
        passValue();
        return true;
    }

    bool open(bool array) {
        if (open_.size() == steps_.size() && onPath()) found_.value.reset();
        if (open_.size() == kMaxDepth) {
            found_.damage = 0;
            return false;
        }
        open_.push_back({array, onPath()});
        return true;
    }

    bool close() {
        open_.pop_back();
        passValue();
        return true;
    }

    std::vector<std::string> steps_;
    const ProgressCheck& checkProgress_;
    std::vector<Container> open_;
    std::string step_;
    JsonValue found_;
};

}  // namespace

JsonValue jsonValue(std::string_view text, std::string_view key, const ProgressCheck& checkProgress) {
    Finder finder(stepsOf(key), checkProgress);
    Json::sax_parse(text.begin(), text.end(), &finder);
    return finder.takeFound();
}

}  // namespace toolkit::quorvis
