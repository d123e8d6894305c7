#include <optional>
#include <string>
#include <vector>

#include "schema/groups/PCSystemParams.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/PowerSupply.h"
#include "toolkit/quorvah/sources/SmbiosNames.h"

namespace toolkit::quorvah {

namespace {

constexpr unsigned kSystem = 1;
constexpr unsigned kBoard = 2;
constexpr unsigned kOemStrings = 11;
constexpr unsigned kHardwareSecurity = 24;

bool isNumber(std::string_view text, std::size_t digits) {
    return text.size() == digits && readCount(text).has_value();
}

// "2023-05-17" for "05/17/2023". Two digits of a year mean the 20th century.
std::string dateOf(std::string_view text) {
    const std::string_view month = takeField(text, '/');
    const std::string_view day = takeField(text, '/');
    std::string year(text);
    if (isNumber(year, 2)) year.insert(0, "19");
    if (!isNumber(month, 2) || !isNumber(day, 2) || !isNumber(year, 4)) return {};
    if (month < "01" || month > "12" || day < "01" || day > "31") return {};
    return year + "-" + std::string(month) + "-" + std::string(day);
}

void setBios(const GatheringContext& context, Instance& system) {
    system.set("BIOSVersion", dmiText(context, "bios_version"));
    system.set("BIOSManufacturer", dmiText(context, "bios_vendor"));
    system.set("BIOSReleaseDate", dateOf(dmiText(context, "bios_date")));
    const std::string release = dmiText(context, "bios_release");
    std::string_view minor = release;
    const std::string_view major = takeField(minor, '.');
    system.set("SystemBIOSMajorRelease", readCount(major));
    system.set("SystemBIOSMinorRelease", readCount(minor));
    system.set("EmbeddedControllerRelease", dmiText(context, "ec_firmware_release"));
}

void setBoard(const GatheringContext& context, Instance& system) {
    system.set("BaseBoardManufacturer", dmiText(context, "board_vendor"));
    system.set("BaseBoardProduct", dmiText(context, "board_name"));
    system.set("BaseBoardVersion", dmiText(context, "board_version"));
    system.set("BaseBoardSerialNumber", dmiText(context, "board_serial"));
    system.set("BaseBoardAssetTag", dmiText(context, "board_asset_tag"));
}

void setIfEmpty(Instance& system, const char* field, const std::string& value) {
    if (system.get(field).empty()) system.set(field, value);
}

// "1.12"; empty if the firmware states no release.
std::string releaseOf(const SmbiosStructure& bios, std::size_t offset) {
    constexpr unsigned kNone = 0xFF;
    if (!bios.has(offset, 2) || bios.byte(offset) == kNone || bios.byte(offset + 1) == kNone) return {};
    return std::to_string(bios.byte(offset)) + "." + std::to_string(bios.byte(offset + 1));
}

void completeBios(const GatheringContext& context, const SmbiosStructure& bios, Instance& system) {
    setIfEmpty(system, "BIOSManufacturer", smbiosText(context, bios, 0x04));
    setIfEmpty(system, "BIOSVersion", smbiosText(context, bios, 0x05));
    setIfEmpty(system, "BIOSReleaseDate", dateOf(smbiosText(context, bios, 0x08)));
    setIfEmpty(system, "EmbeddedControllerRelease", releaseOf(bios, 0x16));
    if (!system.get("SystemBIOSMajorRelease").empty() || releaseOf(bios, 0x14).empty()) return;
    system.set("SystemBIOSMajorRelease", bios.byte(0x14));
    system.set("SystemBIOSMinorRelease", bios.byte(0x15));
}

// The main board, or else the first board of the table.
const SmbiosStructure* mainBoard(const Smbios& smbios) {
    constexpr unsigned kMotherboard = 0x0A;
    const std::vector<const SmbiosStructure*> boards = smbios.ofType(kBoard);
    for (const SmbiosStructure* const board : boards) {
        if (board->byte(0x0D) == kMotherboard) return board;
    }
    return boards.empty() ? nullptr : boards.front();
}

void completeBoard(const GatheringContext& context, const SmbiosStructure& board, Instance& system) {
    setIfEmpty(system, "BaseBoardManufacturer", smbiosText(context, board, 0x04));
    setIfEmpty(system, "BaseBoardProduct", smbiosText(context, board, 0x05));
    setIfEmpty(system, "BaseBoardVersion", smbiosText(context, board, 0x06));
    setIfEmpty(system, "BaseBoardSerialNumber", smbiosText(context, board, 0x07));
    setIfEmpty(system, "BaseBoardAssetTag", smbiosText(context, board, 0x08));
}

std::string_view passwordStatus(unsigned settings) {
    constexpr std::string_view kStatus[] = {"Disabled", "Enabled", "Not Implemented", ""};
    return kStatus[settings >> 2U & 3U];
}

// What only the table has, and what the kernel does not export of it.
void setFromTable(const GatheringContext& context, const Smbios& smbios, Instance& system) {
    for (const SmbiosStructure* const bios : smbios.ofType(0)) completeBios(context, *bios, system);
    if (const SmbiosStructure* const board = mainBoard(smbios)) completeBoard(context, *board, system);
    for (const SmbiosStructure* const structure : smbios.ofType(kSystem))
        system.set("WakeUpType", wakeUpName(structure->byte(0x18)));
    for (const SmbiosStructure* const security : smbios.ofType(kHardwareSecurity)) {
        if (security->has(0x04, 1))
            system.set("AdministratorPasswordStatus", passwordStatus(security->byte(0x04)));
    }
    std::vector<std::string> texts;
    for (const SmbiosStructure* const structure : smbios.ofType(kOemStrings)) {
        for (const std::string_view text : structure->strings) {
            std::string known = context.firmwareText(std::string(text));
            if (!known.empty()) texts.push_back(std::move(known));
        }
    }
    system.set("OemStrings", texts);
}

std::string_view firmwareType(const Root& root) {
    if (root.exists("/sys/firmware/efi")) return "UEFI";
    if (root.exists(deviceTree(root) + "openprom") || root.exists("/proc/openprom")) return "OpenFirmware";
    // Only the firmware of a PC has such tables.
    return root.exists("/sys/firmware/dmi/tables") ? "BIOS" : "";
}

// The variable's attributes take four bytes, its value one.
std::optional<bool> secureBoot(const Root& root) {
    constexpr std::size_t kValueAt = 4;
    constexpr std::size_t kLimit = 4096;
    const std::string variable =
        root.read("/sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c", kLimit)
            .value_or("");
    if (variable.size() != kValueAt + 1) return std::nullopt;
    return variable[kValueAt] != 0;
}

constexpr const char* kSources[] = {"/sys", "/proc/device-tree"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const Smbios smbios(root);
    data.addOne([&](Instance& system) {
        setBios(context, system);
        setBoard(context, system);
        setFromTable(context, smbios, system);
        system.set("FirmwareType", firmwareType(root));
        system.set("SecureBoot", secureBoot(root));
        const PowerSupply supply = readPowerSupply(root);
        system.set("PowerSource", supply.source);
        system.set("BatteryPresent", supply.battery);
    });
    if (smbios.damaged()) data.partial("smbios-broken");
    if (data.instances().empty() && !hasSmbios(root)) data.notApplicable("no-smbios");
}

}  // namespace

constexpr Group kPCSystemParams{.displayName = "PC System Params",
                                .xmlName = "PCSystemParams",
                                .fields = schema::kPCSystemParams.fields,
                                .gather = gather,
                                .sources = kSources};

}  // namespace toolkit::quorvah
