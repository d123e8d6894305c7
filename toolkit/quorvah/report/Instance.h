#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/report/Group.h"

namespace toolkit::quorvah {

// The values of one instance of a group, all empty at first. They are stored in the memory of the GroupData that the
// instance belongs to.
class Instance {
  public:
    Instance(const Group& group, std::pmr::memory_resource& memory);

    // Sets a field. An empty value or std::nullopt means that the value is unknown. Throws std::logic_error if the group
    // has no field of that name. Setting fields in the group's order is fastest.
    void set(std::string_view field, std::string_view value) { replace(indexOf(field), value); }
    void set(std::string_view field, std::same_as<bool> auto value) {
        refer(field, value ? "true" : "false");
    }
    void set(std::string_view field,
             std::integral auto value) requires(!std::same_as<decltype(value), bool> &&
                                                !std::same_as<decltype(value), char>) {
        set(field, std::to_string(value));
    }
    template <typename T>
    void set(std::string_view field, const std::optional<T>& value) {
        if (value) set(field, *value);
    }
    // Sets a field to several values, joined by ";".
    void set(std::string_view field, const std::vector<std::string>& values);
    // Sets a field without copying the value. REQUIRES: the value lives as long as the instance, see GroupData::keep().
    void refer(std::string_view field, std::string_view value) { values_[indexOf(field)] = value; }

    // The current value of a field.
    std::string get(std::string_view field) const { return std::string(values_[indexOf(field)]); }

    // Whether all fields are empty.
    bool empty() const {
        return std::all_of(values_.begin(), values_.end(),
                           [](std::string_view value) { return value.empty(); });
    }

    // In the order of the group's fields.
    std::span<const std::string_view> values() const { return values_; }
    void replace(std::size_t index, std::string_view value);

  private:
    std::size_t indexOf(std::string_view field) const;

    const Group* group_;
    std::pmr::memory_resource* memory_;
    std::span<std::string_view> values_;
    mutable std::size_t next_ = 0;  // the index at which the search for a field starts
};

}  // namespace toolkit::quorvah
