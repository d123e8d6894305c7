#include "cli/scan/Library.h"

#include "cli/scan/Codes.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

constexpr int kLastGroupId = 51;

void forward(int level, int component, void* listener, const char* function, const char* message) {
    static_cast<Listener*>(listener)->hear({level, component, function, message});
}

}  // namespace

Library::Library(Listener& listener, const Workspace& workspace, const std::string& toolkit)
    : listener_(&listener) {
    require(ZAV_init(kProductName, forward, &listener, widenBytes(workspace.path()).c_str(),
                     widenBytes(toolkit).c_str(), &handle_));
}

Library::~Library() {
    if (software_ != nullptr) ZAV_sw_free(software_);
    if (hardware_ != nullptr) ZAV_hw_free(hardware_);
    ZAV_free(handle_);
}

ZAVHwCtx* Library::hardware() {
    if (hardware_ == nullptr) require(ZAV_hw_init(handle_, forward, listener_, &hardware_));
    return hardware_;
}

ZAVSwCtx* Library::software() {
    if (software_ == nullptr) require(ZAV_sw_init(handle_, forward, listener_, &software_));
    return software_;
}

std::vector<GroupName> Library::groups() {
    ZAVHwCtx* const context = hardware();
    std::vector<GroupName> groups;
    for (int id = 1; id <= kLastGroupId; ++id) {
        const wchar_t* name = nullptr;
        if (ZAV_hw_get_group_name(context, id, &name) == ZAV_SUCCESS) groups.push_back({id, toUtf8(name)});
    }
    return groups;
}

}  // namespace zavcli
