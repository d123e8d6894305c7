// Services that scripts in /etc/init.d start.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct InitScript {
    std::string name;
    std::string path;
    std::string description;
    bool enabled = false;
    bool openRc = false;  // whether it is written for OpenRC
};

// Helper files in the directory, which start no service, are omitted.
std::vector<InitScript> readInitScripts(const Root& root);

// The text of "# Short-Description: ..." or of description="...".
std::string scriptDescription(std::string_view script);

}  // namespace toolkit::quorvah
