#include "toolkit/machine/packages/ApkDatabase.h"

#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

// Where the value of a line belongs; null for the lines about files, checksums and dependencies. Letters
// differ by case: 'M' is the mode of a directory, 'm' the maintainer.
std::string_view* valueOf(char letter, ApkPackage& package) {
    switch (letter) {
        case 'P':
            return &package.name;
        case 'V':
            return &package.version;
        case 'A':
            return &package.architecture;
        case 'm':
            return &package.maintainer;
        case 'T':
            return &package.description;
        case 'o':
            return &package.origin;
        case 'I':
            return &package.installedSize;
        default:
            return nullptr;
    }
}

}  // namespace

bool ApkDatabase::next(ApkPackage& package) {
    package = {};
    std::string_view line;
    while (nextLine(rest_, line)) {
        if (line.empty()) {
            if (!package.name.empty()) return true;
            package = {};
        } else if (line.size() > 2 && line[1] == ':') {
            std::string_view* const value = valueOf(line[0], package);
            if (value != nullptr && value->empty()) *value = trimmed(line.substr(2));
        }
    }
    if (!package.name.empty()) return true;
    package = {};
    return false;
}

}  // namespace toolkit
