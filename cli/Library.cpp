#include "cli/Library.h"

#include "cli/Codes.h"
#include "cli/Text.h"

namespace zavcli {

namespace {

constexpr int kLastGroupId = 51;

void forward(int level, int component, void* listener, const char* function, const char* message) {
    static_cast<Listener*>(listener)->hear({level, component, function, message});
}

}  // namespace

Library::Library(Listener& listener, const std::optional<std::string>& toolkit) : listener_(&listener) {
    const std::wstring directory = widenBytes(toolkit.value_or(""));
    require(
        ZAV_init(kProductName, forward, &listener, nullptr, toolkit ? directory.c_str() : nullptr, &handle_));
    const int code = ZAV_hw_init(handle_, forward, listener_, &hardware_);
    if (code != ZAV_SUCCESS) ZAV_free(handle_);
    require(code);
}

Library::~Library() {
    if (software_ != nullptr) ZAV_sw_free(software_);
    ZAV_hw_free(hardware_);
    ZAV_free(handle_);
}

ZAVSwCtx* Library::software() {
    if (software_ == nullptr) require(ZAV_sw_init(handle_, forward, listener_, &software_));
    return software_;
}

std::vector<GroupName> Library::groups() const {
    std::vector<GroupName> groups;
    for (int id = 1; id <= kLastGroupId; ++id) {
        const wchar_t* name = nullptr;
        if (ZAV_hw_get_group_name(hardware_, id, &name) == ZAV_SUCCESS) groups.push_back({id, toUtf8(name)});
    }
    return groups;
}

}  // namespace zavcli
