#include "toolkit/quorvah/report/Report.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace toolkit::quorvah {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Takes the digits at the front of `text`, without leading zeros.
std::string_view takeDigits(std::string_view& text) {
    std::size_t zeros = 0;
    while (zeros < text.size() && text[zeros] == '0') ++zeros;
    std::size_t end = zeros;
    while (end < text.size() && isDigit(text[end])) ++end;
    const std::string_view digits = text.substr(zeros, end - zeros);
    text.remove_prefix(end);
    return digits;
}

// How many characters at the front of two texts are the same.
std::size_t lengthAlike(std::string_view left, std::string_view right) {
    constexpr std::size_t kBlock = 8;  // is compared at once
    const std::size_t most = std::min(left.size(), right.size());
    std::size_t length = 0;
    while (most - length >= kBlock && std::memcmp(&left[length], &right[length], kBlock) == 0)
        length += kBlock;
    while (length < most && left[length] == right[length]) ++length;
    return length;
}

}  // namespace

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
        // Equal literals of one source file are mostly one and the same.
        const bool same = field.size() == name.size() && field.data() == name.data();
        if (same || field == name) return index;
    }
    throw std::logic_error(std::string(group_->xmlName) + " has no field " + std::string(field));
}

bool naturallyBefore(std::string_view left, std::string_view right) {
    // Keys of a group mostly begin alike; what is alike decides nothing, unless it ends within a number.
    std::size_t alike = lengthAlike(left, right);
    while (alike > 0 && isDigit(left[alike - 1])) --alike;
    std::string_view l = left.substr(alike);
    std::string_view r = right.substr(alike);
    while (!l.empty() && !r.empty()) {
        if (isDigit(l.front()) && isDigit(r.front())) {
            const std::string_view a = takeDigits(l);
            const std::string_view b = takeDigits(r);
            if (a.size() != b.size()) return a.size() < b.size();
            if (a != b) return a < b;
            continue;
        }
        if (l.front() != r.front()) {
            return static_cast<unsigned char>(l.front()) < static_cast<unsigned char>(r.front());
        }
        l.remove_prefix(1);
        r.remove_prefix(1);
    }
    if (l.empty() != r.empty()) return l.empty();
    return left < right;
}

void* Report::Memory::do_allocate(std::size_t size, std::size_t alignment) {
    if (size > left_) throw TooMuch();
    left_ -= size;
    return blocks_.allocate(size, alignment);
}

bool Report::trim() {
    bool trimmed = false;
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < instances_.size(); ++i) {
        Instance& instance = instances_[i];
        for (std::size_t field = 0; field < instance.values().size(); ++field) {
            const bool tooLong = instance.values()[field].size() > kLongestValue;
            if (tooLong) instance.replace(field, {});
            trimmed = trimmed || tooLong;
            bytes += instance.values()[field].size();
        }
        if (bytes <= kMostBytes) continue;
        while (instances_.size() > i) instances_.pop_back();
        return true;
    }
    return trimmed;
}

void Report::sort() {
    if (group_->fields.empty()) return;
    const bool bytewise = (group_->fields.front().traits & FieldDef::kBytewise) != 0;
    std::ranges::stable_sort(instances_, [bytewise](const Instance& left, const Instance& right) {
        const std::string_view l = left.values().front();
        const std::string_view r = right.values().front();
        return bytewise ? l < r : naturallyBefore(l, r);
    });
}

}  // namespace toolkit::quorvah
