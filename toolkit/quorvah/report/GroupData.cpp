#include "toolkit/quorvah/report/GroupData.h"

#include <algorithm>

#include "schema/FieldForm.h"
#include "toolkit/quorvah/report/NaturalOrder.h"

namespace toolkit::quorvah {

void* GroupData::Memory::do_allocate(std::size_t size, std::size_t alignment) {
    if (size > left_) throw TooMuch();
    left_ -= size;
    return blocks_.allocate(size, alignment);
}

bool GroupData::trim() {
    bool trimmed = false;
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < instances_.size(); ++i) {
        Instance& instance = instances_[i];
        for (std::size_t field = 0; field < instance.values().size(); ++field) {
            const bool tooLong = instance.values()[field].size() > kMaxValueSize;
            if (tooLong) instance.replace(field, {});
            trimmed = trimmed || tooLong;
            bytes += instance.values()[field].size();
        }
        if (bytes <= kMaxBytes) continue;
        while (instances_.size() > i) instances_.pop_back();
        return true;
    }
    return trimmed;
}

void GroupData::dropMalformed() {
    for (std::size_t i = 0; i < group_->fields.size(); ++i) {
        const schema::Field& field = group_->fields[i];
        if (field.type == schema::Type::Text) continue;
        bool dropped = false;
        for (Instance& instance : instances_) {
            if (schema::hasForm(field, instance.values()[i])) continue;
            instance.replace(i, {});
            dropped = true;
        }
        if (dropped) {
            std::string text(group_->xmlName);
            text.append(": a value of ").append(field.name).append(" is not of its type and omitted");
            warn(std::move(text));
        }
    }
}

void GroupData::sort() {
    if (group_->fields.empty()) return;
    const bool bytewise = group_->fields.front().bytewise;
    std::ranges::stable_sort(instances_, [bytewise](const Instance& left, const Instance& right) {
        const std::string_view l = left.values().front();
        const std::string_view r = right.values().front();
        return bytewise ? l < r : naturallyBefore(l, r);
    });
}

}  // namespace toolkit::quorvah
