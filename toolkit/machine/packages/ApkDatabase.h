#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit {

// One package of an apk database of installed packages. All texts are parts of the file. A missing value is
// empty.
struct ApkPackage {
    std::string_view name;
    std::string_view version;
    std::string_view architecture;
    std::string_view maintainer;
    std::string_view description;
    std::string_view origin;
    std::string_view installedSize;  // bytes
};

// Reads the packages of an apk database one after the other. A paragraph without a package name is skipped.
class ApkParser {
  public:
    // REQUIRES: `text` outlives the packages.
    explicit ApkParser(std::string_view text) : rest_(text) {}

    // False at the end of the file, with `package` emptied.
    bool next(ApkPackage& package);

  private:
    std::string_view rest_;
};

// The files with the installed packages of a tree: `database`, or when it is empty /lib/apk/db/installed and its new place
// below /usr. Each file is named once, also when /lib is a link to /usr/lib.
std::vector<std::string> apkDatabases(const Root& root, const std::string& database);

}  // namespace toolkit
