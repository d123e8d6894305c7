#include "toolkit/quorvah/sources/DeviceTree.h"

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxProperty = 4096;

std::string property(const Root& root, const std::string& name) {
    for (const char* const tree : {"/proc/device-tree/", "/sys/firmware/devicetree/base/"}) {
        std::optional<std::string> bytes = root.read(tree + name, kMaxProperty);
        if (bytes) return *std::move(bytes);
    }
    return {};
}

}  // namespace

std::string deviceTreeText(const Root& root, const std::string& name) {
    const std::string bytes = property(root, name);
    return bytes.substr(0, bytes.find('\0'));
}

std::optional<std::uint32_t> deviceTreeNumber(const Root& root, const std::string& name) {
    const std::string bytes = property(root, name);
    if (bytes.size() != 4) return std::nullopt;
    return static_cast<std::uint32_t>(bigEndian(bytes, 0, 4));
}

}  // namespace toolkit::quorvah
