// What the library takes from the set-up of this machine, found by the same rules.
#pragma once

#include <string>

namespace zavcli {

struct Location {
    bool readable = false;    // the location file could be read
    bool registered = false;  // it lists the product
    std::string toolkit;      // the toolkit directory that it names, as bytes; empty when it names none
};

// Reads a location file, such as /etc/zav/zav.ini, to the letter as the library does.
Location readLocation(const std::string& path, const std::string& product);

// Where the library makes temporary files: what TEMP, else TMP says, else /tmp.
std::string temporaryPath();

}  // namespace zavcli
