#include "toolkit/quorvah/sources/DeviceNameDatabase.h"

#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

DeviceIdsFile& DeviceNameDatabase::ids() {
    if (!ids_) {
        text_ = readFile(Root::kFileLimit);
        ids_.emplace(text_);
    }
    return *ids_;
}

std::string DeviceNameDatabase::version() const {
    constexpr std::size_t kHeader = 4096;
    const std::string header = readFile(kHeader);
    const std::string_view version = DeviceIdsFile(header).version();
    return version.empty() ? std::string() : fileName_ + " " + std::string(version);
}

// The first bytes of the file; empty if there is none.
std::string DeviceNameDatabase::readFile(std::size_t limit) const {
    Root host;
    host.stayLocal();
    std::vector<std::string> folders = {directory_};
    if (directory_.empty()) folders = {"/usr/share/misc", "/usr/share/hwdata"};
    for (std::string& folder : folders) {
        std::string text = host.readStart(folder.append("/").append(fileName_), limit);
        if (!text.empty()) return text;
    }
    return {};
}

}  // namespace toolkit::quorvah
