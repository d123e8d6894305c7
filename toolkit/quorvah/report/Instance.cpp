#include "toolkit/quorvah/report/Instance.h"

#include <cstring>
#include <memory>
#include <stdexcept>

namespace toolkit::quorvah {

Instance::Instance(const Group& group, std::pmr::memory_resource& memory)
    : group_(&group),
      memory_(&memory),
      values_(std::pmr::polymorphic_allocator<std::string_view>(&memory).allocate(group.fields.size()),
              group.fields.size()) {
    std::ranges::uninitialized_value_construct(values_);
}

void Instance::replace(std::size_t index, std::string_view value) {
    values_[index] = {};
    if (value.empty()) return;
    char* const copy = static_cast<char*>(memory_->allocate(value.size(), 1));
    std::memcpy(copy, value.data(), value.size());
    values_[index] = {copy, value.size()};
}

void Instance::set(std::string_view field, const std::vector<std::string>& values) {
    std::string joined;
    for (const std::string& value : values) {
        if (!joined.empty()) joined += ';';
        joined += value;
    }
    set(field, joined);
}

std::size_t Instance::indexOf(std::string_view field) const {
    for (std::size_t tried = 0; tried < values_.size(); ++tried) {
        if (next_ >= values_.size()) next_ = 0;
        const std::size_t index = next_++;
        const std::string_view name = group_->fields[index].name;
        // Equal literals of a source file usually have one address, so the texts need not be compared.
        const bool sameLiteral = field.size() == name.size() && field.data() == name.data();
        if (sameLiteral || field == name) return index;
    }
    throw std::logic_error(std::string(group_->xmlName) + " has no field " + std::string(field));
}

}  // namespace toolkit::quorvah
