#include "hw/HWTables.h"

#include <algorithm>

namespace zav {

namespace {

// A vector that grows takes up to three times the memory of its elements.
constexpr std::size_t kRowCost = 3 * sizeof(HWTables::Row);

// Equal names of a document have one address.
bool haveSameNames(const HWTables::Names& names, const HWInstance& instance) {
    return std::equal(names.begin(), names.end(), instance.fields.begin(), instance.fields.end(),
                      [](const wchar_t* name, const HWField& field) { return name == field.name; });
}

}  // namespace

void HWTables::clear() {
    for (auto& rows : rows_) std::vector<Row>().swap(rows);
    names_.clear();
    values_.clear();
    budget_ = tessa::MemoryBudget();
    if (texts_ != nullptr) texts_->clear();
}

tessa::TextStore& HWTables::texts() {
    if (texts_ == nullptr) texts_ = std::make_shared<tessa::TextStore>();
    return *texts_;
}

void HWTables::add(int group, const HWInstance& instance) {
    budget_.charge(kRowCost);
    std::vector<Row>& rows = rows_.at(static_cast<std::size_t>(group));
    auto* const values = static_cast<const char**>(values_.allocate(instance.fields.size() * sizeof(char*)));
    std::transform(instance.fields.begin(), instance.fields.end(), values,
                   [](const HWField& field) { return field.value; });
    rows.push_back({namesOf(rows, instance), values});
}

HWTables::Names* HWTables::namesOf(const std::vector<Row>& neighbours, const HWInstance& instance) {
    if (!neighbours.empty() && haveSameNames(*neighbours.back().names, instance))
        return neighbours.back().names;
    Names& names = names_.emplace_back();
    names.reserve(instance.fields.size());
    for (const HWField& field : instance.fields) names.push_back(field.name);
    return &names;
}

const HWTables::Row* HWTables::find(int group, int instance) const {
    const std::vector<Row>& rows = rowsOf(group);
    const auto index = static_cast<std::size_t>(instance);
    return instance >= 0 && index < rows.size() ? &rows[index] : nullptr;
}

}  // namespace zav
