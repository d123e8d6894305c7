#include "toolkit/quorvah/sources/DmiId.h"

#include <array>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

// Whether a version such as "2.4" is older than 2.6.
bool isBefore26(std::string_view version) {
    const Count major = readCount(takeField(version, '.'));
    const Count minor = readCount(version);
    return major && minor && (*major < 2 || (*major == 2 && *minor < 6));
}

}  // namespace

std::string dmiLine(const Root& root, const std::string& file) {
    for (const char* const directory : {"/sys/class/dmi/id/", "/sys/devices/virtual/dmi/id/"}) {
        std::string text = root.readLine(directory + file);
        if (!text.empty()) return text;
    }
    return {};
}

std::string dmiText(const GatheringContext& context, const std::string& file) {
    return context.firmwareText(dmiLine(context.root(), file));
}

std::string dmiUuid(const GatheringContext& context) {
    std::string uuid = dmiText(context, "product_uuid");
    for (char& c : uuid) c = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    return uuid;
}

std::string smbiosText(const GatheringContext& context, const SmbiosStructure& structure,
                       std::size_t offset) {
    return context.firmwareText(std::string(structure.string(offset)));
}

std::string smbiosUuid(const SmbiosStructure& system, const std::string& version) {
    constexpr std::size_t kUuid = 0x08;
    if (!system.has(kUuid, 16)) return {};
    constexpr std::array<std::size_t, 5> kWidths = {4, 2, 2, 2, 6};
    std::string text;
    std::size_t at = kUuid;
    for (std::size_t i = 0; i < kWidths.size(); ++i) {
        const bool swapped = i < 3 && !isBefore26(version);
        const std::uint64_t field = swapped ? littleEndian(system.formatted, at, kWidths[i])
                                            : bigEndian(system.formatted, at, kWidths[i]);
        if (i > 0) text += '-';
        text += hexDigits(field, static_cast<int>(2 * kWidths[i]));
        at += kWidths[i];
    }
    return text;
}

bool hasSmbios(const Root& root) {
    return root.exists("/sys/firmware/dmi/tables/DMI") || root.exists("/sys/firmware/dmi/entries");
}

}  // namespace toolkit::quorvah
