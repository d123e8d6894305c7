#include "toolkit/quorvah/NameDatabase.h"

#include <vector>

#include "toolkit/machine/Root.h"

namespace toolkit::quorvah {
namespace {

// Null when there is none.
std::unique_ptr<FileText> openDatabase(const Options& options, const std::string& fileName) {
    const Root host;
    std::vector<std::string> folders = {options.ids};
    if (options.ids.empty()) folders = {"/usr/share/misc", "/usr/share/hwdata"};
    for (std::string& folder : folders) {
        auto file = std::make_unique<FileText>(host, folder.append("/").append(fileName));
        if (!file->text().empty()) return file;
    }
    return nullptr;
}

}  // namespace

NameDatabase::NameDatabase(const Options& options, const char* fileName)
    : file_(openDatabase(options, fileName)), ids_(file_ ? file_->text() : std::string_view()) {}

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

}  // namespace toolkit::quorvah
