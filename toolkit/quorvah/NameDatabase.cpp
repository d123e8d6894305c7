#include "toolkit/quorvah/NameDatabase.h"

#include <optional>
#include <vector>

#include "toolkit/quorvah/Root.h"

namespace quorvah {
namespace {

std::string readDatabase(const Options& options, const std::string& fileName) {
    const Root host;
    std::vector<std::string> folders = {options.ids};
    if (options.ids.empty()) folders = {"/usr/share/misc", "/usr/share/hwdata"};
    for (const std::string& folder : folders) {
        if (std::optional<std::string> text = host.read((folder + '/').append(fileName)))
            return std::move(*text);
    }
    return {};
}

}  // namespace

NameDatabase::NameDatabase(const Options& options, const char* fileName)
    : text_(readDatabase(options, fileName)), ids_(text_) {}

std::string nameDatabaseVersions(const Options& options) {
    std::string versions;
    for (const char* const fileName : {"pci.ids", "usb.ids"}) {
        const std::string version(NameDatabase(options, fileName).ids().version());
        if (version.empty()) continue;
        if (!versions.empty()) versions += ';';
        versions.append(fileName).append(" ").append(version);
    }
    return versions;
}

}  // namespace quorvah
