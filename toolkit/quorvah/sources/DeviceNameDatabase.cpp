#include "toolkit/quorvah/sources/DeviceNameDatabase.h"

#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {
namespace {

// The content of the database; empty if there is none.
std::string readDatabase(const Options& options, const std::string& fileName) {
    const Root host;
    std::vector<std::string> folders = {options.ids};
    if (options.ids.empty()) folders = {"/usr/share/misc", "/usr/share/hwdata"};
    for (std::string& folder : folders) {
        std::string text = host.read(folder.append("/").append(fileName)).value_or(std::string());
        if (!text.empty()) return text;
    }
    return {};
}

}  // namespace

DeviceNameDatabase::DeviceNameDatabase(const Options& options, const char* fileName)
    : text_(readDatabase(options, fileName)), ids_(text_) {}

std::string deviceNameDatabaseVersions(const Options& options) {
    std::string versions;
    for (const char* const fileName : {"pci.ids", "usb.ids"}) {
        const std::string version(DeviceNameDatabase(options, fileName).ids().version());
        if (version.empty()) continue;
        if (!versions.empty()) versions += ';';
        versions.append(fileName).append(" ").append(version);
    }
    return versions;
}

}  // namespace toolkit::quorvah
