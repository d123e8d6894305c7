// Reads the JSON of `zav hw`: {"scan": {...}, "status": {group: {...}}, "groups": {group: [{field: value}]}}. Other
// members are skipped. Typed values become texts again.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "cli/diff/BadInventory.h"
#include "cli/diff/InventoryBuilder.h"

namespace zavcli {

namespace {

using Json = nlohmann::json;

// The characters of the text. Counts the lines that the parser has seen.
class CountingIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* place, std::size_t& line) : place_(place), line_(&line) {}
    reference operator*() const { return *place_; }
    CountingIterator& operator++() {
        if (*place_++ == '\n') ++*line_;
        return *this;
    }
    CountingIterator operator++(int) {
        const CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator& other) const { return place_ == other.place_; }

  private:
    const char* place_;
    std::size_t* line_;
};

GroupState stateNamed(std::string_view word) {
    constexpr std::array kStates = {GroupState::Complete, GroupState::Partial, GroupState::Unread,
                                    GroupState::NotApplicable, GroupState::Unsupported};
    const auto* const found = std::find_if(kStates.begin(), kStates.end(),
                                           [word](GroupState state) { return statusWord(state) == word; });
    return found == kStates.end() ? GroupState::Unknown : *found;
}

class InventoryReader : public Json::json_sax_t {
  public:
    InventoryReader(std::size_t size, const std::size_t& line) : size_(size), line_(line) {}

    SavedInventory finish() {
        if (!hasGroups_) throw BadInventory(0, "this is no hardware inventory: it has no \"groups\"");
        return builder_.finish();
    }

    bool null() override { return scalar("null", ""); }
    bool boolean(bool value) override {
        if (isAt("scan", 2) && path_[1] == "privileged") {
            builder_.inventory().privileged = value;
            return true;
        }
        return scalar("a boolean", value ? "true" : "false");
    }
    bool number_integer(std::int64_t value) override { return scalar("a number", std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) override { return scalar("a number", std::to_string(value)); }
    bool number_float(double, const std::string& digits) override { return scalar("a number", digits); }
    bool binary(Json::binary_t&) override { return other("binary data"); }

    bool string(std::string& value) override {
        if (isAt("groups", 4) || isAt("groups", 5)) {
            addValue(std::move(value));
        } else if (isAt("scan", 2)) {
            if (path_[1] == "time") builder_.inventory().time = value;
            if (path_[1] == "root") builder_.inventory().ofTree = !value.empty();
        } else if (isAt("status", 3)) {
            if (path_[2] == "status") status_.state = stateNamed(value);
            if (path_[2] == "reason") status_.reason = value;
        } else {
            return other("a text");
        }
        return true;
    }

    bool start_object(std::size_t) override {
        if (isAt("groups", 2)) refuse("an object", "an array of instances");
        if (isAt("groups", 4) || isAt("groups", 5)) refuse("an object", "a text");
        open();
        if (isAt("groups", 2)) hasGroups_ = true;
        if (isAt("groups", 4)) builder_.beginInstance();
        if (isAt("status", 3)) status_ = {};
        return true;
    }
    bool end_object() override {
        if (isAt("status", 3)) builder_.setStatus(path_[1], status_);
        path_.pop_back();
        return true;
    }
    bool key(std::string& name) override {
        path_.back() = std::move(name);
        return true;
    }
    bool start_array(std::size_t) override {
        if (path_.empty()) refuse("an array", "an object");
        if (path_.front() == "groups" && path_.size() != 2 && path_.size() != 4)
            refuse("an array", "an object or a text");
        if (isAt("groups", 2)) builder_.beginGroup(path_[1]);
        if (isAt("groups", 4)) list_.reset();
        open();
        return true;
    }
    bool end_array() override {
        path_.pop_back();
        if (isAt("groups", 4)) builder_.addField(path_[3], list_.value_or(""));
        return true;
    }
    bool parse_error(std::size_t position, const std::string& token, const Json::exception&) override {
        // The parser counts the end of the text as a character.
        if (position > size_) throw BadInventory(line_, "the JSON ends too early");
        throw BadInventory(line_,
                           fmt::format("the JSON is not valid at '{}'", token.substr(0, kMaxShownToken)));
    }

  private:
    static constexpr std::size_t kMaxDepth = 100;
    static constexpr std::size_t kMaxShownToken = 40;

    // Whether the place is so deep within the member of that name of the document.
    bool isAt(std::string_view member, std::size_t depth) const {
        return path_.size() == depth && path_.front() == member;
    }
    void open() {
        if (path_.size() == kMaxDepth) throw BadInventory(line_, "the JSON is nested too deep");
        path_.emplace_back();
    }
    // The value of a field, or one of a list.
    void addValue(std::string text) {
        if (path_.size() == 4)
            builder_.addField(path_[3], std::move(text));
        else
            list_ = list_ ? *list_ + ';' + text : std::move(text);
    }
    bool scalar(const char* kind, std::string text) {
        if (!isAt("groups", 4) && !isAt("groups", 5)) return other(kind);
        addValue(std::move(text));
        return true;
    }
    // A value at a place that has none.
    bool other(const char* kind) {
        if (path_.empty()) refuse(kind, "an object");
        if (path_.front() == "groups") refuse(kind, "an object or an array");
        return true;
    }
    [[noreturn]] void refuse(const char* found, const char* expected) const {
        throw BadInventory(line_, fmt::format("there is {} instead of {}{}", found, expected,
                                              path_.empty() || path_.back().empty()
                                                  ? ""
                                                  : fmt::format(" for \"{}\"", path_.back())));
    }

    std::size_t size_;
    const std::size_t& line_;
    InventoryBuilder builder_;
    // The name of the current member of each open object; empty for an open array.
    std::vector<std::string> path_;
    GroupStatus status_;
    std::optional<std::string> list_;
    bool hasGroups_ = false;
};

}  // namespace

SavedInventory parseJsonInventory(std::string_view content) {
    std::size_t line = 1;
    InventoryReader reader(content.size(), line);
    const CountingIterator begin(content.data(), line);
    const CountingIterator end(content.data() + content.size(), line);
    Json::sax_parse(begin, end, &reader);
    return reader.finish();
}

}  // namespace zavcli
