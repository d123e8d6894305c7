#include <array>
#include <string>
#include <vector>

#include "schema/groups/SMBIOS.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/SmbiosNames.h"

namespace toolkit::quorvah {

namespace {

constexpr unsigned kTypes = 256;

std::string hexText(std::string_view bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const char byte : bytes) digits += hexDigits(static_cast<unsigned char>(byte), 2);
    return digits;
}

std::vector<std::string> textsOf(const SmbiosStructure& structure) {
    std::vector<std::string> texts;
    texts.reserve(structure.strings.size());
    for (const std::string_view text : structure.strings) texts.emplace_back(trimmed(text));
    return texts;
}

constexpr const char* kSources[] = {"/sys"};

void gather(GatheringContext& context, GroupData& data) {
    const Smbios smbios(context.root());
    if (!hasSmbios(context.root())) data.notApplicable("no-smbios");
    std::array<unsigned, kTypes> numbers{};
    for (const SmbiosStructure& structure : smbios.structures()) {
        context.checkTime();
        Instance& instance = data.add(hexDigits(structure.handle, 4));
        instance.set("Type", structure.type);
        instance.set("Description", smbiosTypeName(structure.type));
        instance.set("Length", structure.formatted.size());
        instance.set("Strings", textsOf(structure));
        instance.set("Data", hexText(structure.formatted));
        instance.set("SmbiosVersion", smbios.version());
        instance.set("Number", numbers[structure.type % kTypes]++);
    }
    if (smbios.damaged()) data.partial("smbios-broken");
}

}  // namespace

constexpr Group kSMBIOS{.displayName = "SMBIOS",
                        .xmlName = "SMBIOS",
                        .fields = schema::kSMBIOS.fields,
                        .gather = gather,
                        .sources = kSources};

}  // namespace toolkit::quorvah
