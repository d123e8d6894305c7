// The settings of screen savers in the files of several desktops.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

struct ScreenSaverSettings {
    std::optional<bool> active;  // whether it starts when nobody is there
    std::optional<bool> secure;  // whether it asks for the password
    Count timeout;               // seconds until it starts
    std::string executable;
    Count lockDelay;  // seconds from its start until it asks for the password

    bool empty() const { return !active && !secure && !timeout && executable.empty() && !lockDelay; }
};

// kscreenlockerrc of KDE.
ScreenSaverSettings readKdeSettings(std::string_view text);
// xfce4-screensaver.xml.
ScreenSaverSettings readXfceSettings(std::string_view document);
// .xscreensaver.
ScreenSaverSettings readXScreenSaverSettings(std::string_view text);

// The database of dconf, for one of the desktops "gnome", "mate" and "cinnamon".
ScreenSaverSettings readDconfSettings(std::string_view database, std::string_view desktop);

}  // namespace toolkit::quorvah
