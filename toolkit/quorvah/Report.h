#pragma once

#include <algorithm>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvah/Group.h"

namespace toolkit::quorvah {

// The values of one instance of a group, all empty at first.
class Instance {
  public:
    explicit Instance(const Group& group) : group_(&group), values_(group.fields.size()) {}

    // Sets a field; an empty or missing value leaves it unknown. Throws std::logic_error for a name that the
    // group does not have. Setting fields in the group's order is fastest.
    void set(std::string_view field, std::string value) { at(field) = std::move(value); }
    void set(std::string_view field, std::string_view value) { at(field) = value; }
    void set(std::string_view field, const char* value) { at(field) = value; }
    void set(std::string_view field, std::same_as<bool> auto value) { at(field) = value ? "true" : "false"; }
    void set(std::string_view field,
             std::integral auto value) requires(!std::same_as<decltype(value), bool> &&
                                                !std::same_as<decltype(value), char>) {
        at(field) = std::to_string(value);
    }
    template <typename T>
    void set(std::string_view field, const std::optional<T>& value) {
        if (value) set(field, *value);
    }
    // Several values, joined with ";".
    void set(std::string_view field, const std::vector<std::string>& values);

    // A field's value so far.
    const std::string& get(std::string_view field) const { return values_[indexOf(field)]; }

    // Whether no field has a value.
    bool empty() const {
        return std::all_of(values_.begin(), values_.end(),
                           [](const std::string& value) { return value.empty(); });
    }

    // In the order of the group's fields.
    const std::vector<std::string>& values() const { return values_; }
    std::vector<std::string>& values() { return values_; }

  private:
    std::size_t indexOf(std::string_view field) const;
    std::string& at(std::string_view field) { return values_[indexOf(field)]; }

    const Group* group_;
    std::vector<std::string> values_;
    mutable std::size_t next_ = 0;  // where the search for a field begins
};

// What came of gathering one group.
class Report {
  public:
    explicit Report(const Group& group) : group_(&group) {}

    const Group& group() const { return *group_; }

    // A new instance; the reference stays valid.
    Instance& add() { return instances_.emplace_back(*group_); }
    // A new instance with its key set.
    Instance& add(std::string_view key) {
        Instance& instance = add();
        if (!group_->fields.empty()) instance.values().front() = key;
        return instance;
    }

    // Something that belongs to the group could not be read; `reason` is one word ("permission", "timeout").
    // The first reason stands.
    void partial(std::string_view reason) {
        if (reason_.empty()) reason_ = reason;
    }
    // Empty for a group that is complete.
    const std::string& reason() const { return reason_; }

    // Something to tell the person who reads the report.
    void warn(std::string text) { warnings_.push_back(std::move(text)); }
    const std::vector<std::string>& warnings() const { return warnings_; }

    // How long gathering took.
    void setElapsed(std::chrono::milliseconds elapsed) { elapsed_ = elapsed; }
    std::chrono::milliseconds elapsed() const { return elapsed_; }

    // Sorts the instances by their keys. Numbers in keys count as such, so cpu10 comes behind cpu9, unless
    // the key is bytewise.
    void sort();

    std::deque<Instance>& instances() { return instances_; }
    const std::deque<Instance>& instances() const { return instances_; }

  private:
    const Group* group_;
    std::deque<Instance> instances_;
    std::string reason_;
    std::vector<std::string> warnings_;
    std::chrono::milliseconds elapsed_{0};
};

// Whether `left` comes before `right` when the decimal numbers in them are compared by value.
bool naturallyBefore(std::string_view left, std::string_view right);

}  // namespace toolkit::quorvah
