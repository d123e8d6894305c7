#include "toolkit/quorvah/sources/PowerSupply.h"

namespace toolkit::quorvah {

PowerSupply readPowerSupply(const Root& root) {
    const std::string supplies = "/sys/class/power_supply/";
    PowerSupply found;
    if (!root.isDirectory(supplies)) return found;
    bool mains = false;
    bool online = false;
    found.battery = false;
    for (const std::string& name : root.list(supplies)) {
        const std::string directory = supplies + name + "/";
        if (root.readLine(directory + "scope") == "Device") continue;
        const std::string type = root.readLine(directory + "type");
        if (type == "Battery") {
            if (root.readLine(directory + "present") != "0") found.battery = true;
        } else if (type == "Mains" || type == "USB" || type == "Wireless") {
            mains = true;
            online = online || root.readCount(directory + "online").value_or(0) != 0;
        }
    }
    if (online) {
        found.source = "AC";
    } else if (*found.battery && mains) {
        found.source = "Battery";
    }
    return found;
}

}  // namespace toolkit::quorvah
