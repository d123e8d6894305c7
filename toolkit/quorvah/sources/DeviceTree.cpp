#include "toolkit/quorvah/sources/DeviceTree.h"

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxProperty = 4096;

}  // namespace

std::string deviceTree(const Root& root) {
    const char* const usual = "/proc/device-tree/";
    return root.isDirectory(usual) ? usual : "/sys/firmware/devicetree/base/";
}

std::string deviceTreeBytes(const Root& root, const std::string& property) {
    return root.read(deviceTree(root) + property, kMaxProperty).value_or("");
}

std::string deviceTreeText(const Root& root, const std::string& name) {
    const std::string bytes = deviceTreeBytes(root, name);
    return bytes.substr(0, bytes.find('\0'));
}

std::optional<std::uint32_t> deviceTreeNumber(const Root& root, const std::string& name) {
    const std::string bytes = deviceTreeBytes(root, name);
    if (bytes.size() != 4) return std::nullopt;
    return static_cast<std::uint32_t>(bigEndian(bytes, 0, 4));
}

}  // namespace toolkit::quorvah
