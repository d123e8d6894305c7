#include "cli/scan/LibraryHandle.h"

#include "cli/scan/ErrorMessages.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr int kMaxGroupId = ZAV_HW_IPV6_ADDRESS;

void forward(int level, int component, void* listener, const char* function, const char* message) {
    if (listener != nullptr)
        static_cast<LogListener*>(listener)->onMessage({level, component, function, message});
}

}  // namespace

LibraryHandle::LibraryHandle(LogListener* listener, const Workspace& workspace, const std::string& toolkit)
    : listener_(listener) {
    requireSuccess(ZAV_init(kProductName, forward, listener, widenBytes(workspace.path()).c_str(),
                            widenBytes(toolkit).c_str(), &handle_));
}

LibraryHandle::~LibraryHandle() {
    if (software_ != nullptr) ZAV_sw_free(software_);
    if (hardware_ != nullptr) ZAV_hw_free(hardware_);
    ZAV_free(handle_);
}

ZAVHwCtx* LibraryHandle::hardware() {
    if (hardware_ == nullptr) requireSuccess(ZAV_hw_init(handle_, forward, listener_, &hardware_));
    return hardware_;
}

ZAVSwCtx* LibraryHandle::software() {
    if (software_ == nullptr) requireSuccess(ZAV_sw_init(handle_, forward, listener_, &software_));
    return software_;
}

std::vector<GroupName> LibraryHandle::groups() {
    ZAVHwCtx* const context = hardware();
    std::vector<GroupName> groups;
    for (int id = 1; id <= kMaxGroupId; ++id) {
        const wchar_t* name = nullptr;
        if (ZAV_hw_get_group_name(context, id, &name) == ZAV_SUCCESS) groups.push_back({id, toUtf8(name)});
    }
    return groups;
}

}  // namespace zavcli
