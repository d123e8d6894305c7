#include "toolkit/quorvah/sources/DmiId.h"

namespace toolkit::quorvah {

std::string dmiText(const GatheringContext& context, const std::string& file) {
    // A captured tree may lack the link in /sys/class.
    for (const char* const directory : {"/sys/class/dmi/id/", "/sys/devices/virtual/dmi/id/"}) {
        std::string text = context.firmwareText(context.root().readLine(directory + file));
        if (!text.empty()) return text;
    }
    return {};
}

std::string smbiosText(const GatheringContext& context, const SmbiosStructure& structure,
                       std::size_t offset) {
    return context.firmwareText(std::string(structure.string(offset)));
}

bool hasSmbios(const Root& root) {
    return root.exists("/sys/firmware/dmi/tables/DMI") || root.exists("/sys/firmware/dmi/entries");
}

}  // namespace toolkit::quorvah
