#pragma once

#include <string>
#include <vector>

#include "cli/Groups.h"
#include "cli/Library.h"

namespace zavcli {

// What the library says of this machine's set-up when it is opened without being told anything.
struct Probe {
    bool configured = false;  // /etc/zav/zav.ini could be read
    bool registered = false;  // it lists this command's product name
    std::string toolkit;      // the toolkit directory that it names; empty when it names none
    std::string workspace;    // the temporary directory that was made, and removed again
    std::vector<GroupName> groups;
};

// Opens and closes the library; `also` hears its messages too. Throws Failure when the library cannot be
// opened.
Probe probeLibrary(Listener& also);

}  // namespace zavcli
