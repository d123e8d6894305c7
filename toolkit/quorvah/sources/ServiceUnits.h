// Services in the files of systemd: the unit files, and the links that enable them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct ServiceUnit {
    std::string name;  // "ssh.service"
    std::string file;  // of the unit; an instance has that of its template
    std::string description;
    std::string program;  // the first that it starts
    std::string user;
    bool enabled = false;
    bool masked = false;
    bool installable = false;  // whether it can be enabled
};

// What a unit file sets. Later assignments replace earlier ones, so a file and its additions may be joined.
void readServiceUnit(std::string_view text, ServiceUnit& unit);

// The services of all directories of unit files. Other names of a service are omitted.
std::vector<ServiceUnit> readServiceUnits(const Root& root);

}  // namespace toolkit::quorvah
