#include "tests/hw/Inventory.h"

#include <utility>

namespace hwtest {

Inventory::Inventory(const std::string& toolkitName) : Toolkit(toolkitName), LibraryHost(path()) {
    EXPECT_EQ(ZAV_hw_init(handle(), zavtest::LogRecorder::callback, &log_, &context_), 0);
    EXPECT_EQ(enable(0), 0);
    log_.messages.clear();
}

Inventory::~Inventory() {
    if (context_ != nullptr) close();
}

void Inventory::close() {
    EXPECT_EQ(ZAV_hw_free(std::exchange(context_, nullptr)), 0);
    closeHandle();
}

int Inventory::returnCode() const {
    int code = 0;
    EXPECT_EQ(ZAV_hw_get_returncode(context_, &code), 0);
    return code;
}

int Inventory::instances(int group) const {
    int count = 0;
    EXPECT_EQ(ZAV_hw_get_group_instances(context_, group, &count), 0);
    return count;
}

std::vector<std::wstring> Inventory::fields(int group, int instance) const {
    const wchar_t** names = nullptr;
    int count = 0;
    EXPECT_EQ(ZAV_hw_get_fields(context_, group, instance, &names, &count), 0);
    return {names, names + count};
}

std::wstring Inventory::value(int group, int instance, const wchar_t* field) const {
    const wchar_t* text = L"";
    EXPECT_EQ(ZAV_hw_get_value(context_, group, instance, field, &text), 0);
    return text;
}

}  // namespace hwtest
