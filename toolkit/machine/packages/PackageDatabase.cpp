#include "toolkit/machine/packages/PackageDatabase.h"

#include <algorithm>

#include "toolkit/machine/files/InputFile.h"

namespace toolkit {

std::string_view keepValue(std::string_view value, PackageTexts& texts) {
    return texts.keep(value.substr(0, kMaxValueLength + 1));
}

void splitVersion(InstalledPackage& package) {
    std::string_view rest = package.version;
    const std::size_t dash = rest.rfind('-');
    if (dash != std::string_view::npos) package.release = rest.substr(dash + 1);
    rest = rest.substr(0, dash);
    const std::size_t colon = rest.find(':');
    if (colon != std::string_view::npos) package.epoch = rest.substr(0, colon);
    package.upstream = colon == std::string_view::npos ? rest : rest.substr(colon + 1);
}

std::string folderOf(const std::string& path, const char* defaultPath) {
    if (path.empty()) return defaultPath;
    return path.ends_with('/') ? path : path + "/";
}

std::string readSmallFile(const Root& root, const std::string& path, PackageTexts& texts,
                          PackageReading& reading) {
    // A description of a package is smaller than this.
    constexpr std::size_t kMaxSize = std::size_t{1} << 20;
    InputFile file(root, path);
    if (file.state() == InputFile::State::Unreadable) reading.note(PackageReading::Damage::Unreadable, path);
    if (file.state() != InputFile::State::Open) return {};
    std::string content(std::min<std::uint64_t>(file.size() + 1, kMaxSize + 1), '\0');
    content.resize(file.readAt(0, content));
    const bool whole = content.size() <= kMaxSize && !file.failed();
    if (!whole) reading.note(PackageReading::Damage::Broken, path);
    return whole && texts.budget().read(content.size()) ? content : std::string();
}

}  // namespace toolkit
