#include <string>

#include "schema/groups/MemoryModules.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/MemoryMaker.h"
#include "toolkit/quorvah/sources/SmbiosMemory.h"
#include "toolkit/quorvah/sources/SmbiosNames.h"

namespace toolkit::quorvah {

namespace {

constexpr unsigned kMemoryModule = 17;
constexpr unsigned kUnknownWord = 0xFFFF;
constexpr std::uint64_t kKib = 1024;
const std::string kControllers = "/sys/devices/system/edac/mc/";

void setKnown(Instance& module, const char* field, std::uint64_t number) {
    if (number != 0) module.set(field, number);
}

// A width or a voltage.
void setWord(Instance& module, const char* field, const SmbiosStructure& structure, std::size_t offset) {
    const unsigned word = structure.word(offset);
    if (word != kUnknownWord) setKnown(module, field, word);
}

// In MT/s. A speed that does not fit into the word is in the extended field.
std::uint64_t speedOf(const SmbiosStructure& structure, std::size_t offset, std::size_t extended) {
    const unsigned speed = structure.word(offset);
    return speed == kUnknownWord ? structure.number(extended, 4) & 0x7FFFFFFFU : speed;
}

bool isEmpty(const SmbiosStructure& slot) {
    return slot.word(0x0C) == 0;
}

// Some firmware leaves the text empty and has only the code of the maker.
std::string makerOf(const GatheringContext& context, const SmbiosStructure& structure) {
    const std::string text = smbiosText(context, structure, 0x17);
    if (!text.empty()) return memoryMaker(text);
    return memoryMaker(structure.byte(0x2C) & 0x7FU, structure.byte(0x2D));
}

void addModule(const GatheringContext& context, const SmbiosStructure& structure, GroupData& data) {
    Instance& module = data.add(smbiosText(context, structure, 0x10));
    module.set("BankLocator", smbiosText(context, structure, 0x11));
    if (isEmpty(structure)) module.set("Capacity", 0);
    setKnown(module, "Capacity", moduleSize(structure) * kKib);
    module.set("FormFactor", memoryFormName(structure.byte(0x0E)));
    module.set("MemoryType", memoryTypeName(structure.byte(0x12)));
    module.set("TypeDetail", memoryDetailNames(structure.word(0x13)));
    setWord(module, "TotalWidth", structure, 0x08);
    setWord(module, "DataWidth", structure, 0x0A);
    setKnown(module, "Speed", speedOf(structure, 0x15, 0x54));
    setKnown(module, "ConfiguredMemorySpeed", speedOf(structure, 0x20, 0x58));
    setWord(module, "MinimumVoltage", structure, 0x22);
    setWord(module, "MaximumVoltage", structure, 0x24);
    setWord(module, "ConfiguredVoltage", structure, 0x26);
    setKnown(module, "Rank", structure.byte(0x1B) & 0xFU);
    module.set("Manufacturer", makerOf(context, structure));
    module.set("PartNumber", smbiosText(context, structure, 0x1A));
    module.set("SerialNumber", smbiosText(context, structure, 0x18));
    module.set("AssetTag", smbiosText(context, structure, 0x19));
    module.set("MemoryTechnology", memoryTechnologyName(structure.byte(0x28)));
    module.set("Handle", hexDigits(structure.handle, 4));
}

// Whether the memory controller's driver writes this word into the type: "Registered-DDR4", "Low-Power-DDR3-RAM".
bool says(std::string_view type, std::string_view word) {
    return type.find(word) != std::string_view::npos;
}

void setControllerType(std::string_view type, Instance& module) {
    const std::size_t at = type.find("DDR");
    if (at != std::string_view::npos) {
        const std::string name(type.substr(at, 4));
        const bool numbered = name.size() == 4 && name[3] >= '0' && name[3] <= '9';
        module.set("MemoryType", (says(type, "Low-Power") ? "LP" : "") + (numbered ? name : "DDR"));
    }
    if (says(type, "Unbuffered")) module.set("TypeDetail", "Unbuffered (Unregistered)");
    if (says(type, "Registered")) module.set("TypeDetail", "Registered (Buffered)");
    if (says(type, "Load-Reduced")) module.set("TypeDetail", "LRDIMM");
}

// What the drivers of memory controllers know of the modules, which every user may read.
void addFromControllers(const Root& root, GroupData& data) {
    for (const std::string& controller : root.list(kControllers)) {
        if (!controller.starts_with("mc")) continue;
        const std::string parent = kControllers + controller + "/";
        for (const std::string& name : root.list(parent)) {
            if (!name.starts_with("dimm") && !name.starts_with("rank")) continue;
            const std::string directory = parent + name + "/";
            const Count mebibytes = root.readCount(directory + "size");
            if (mebibytes.value_or(0) == 0) continue;
            std::string label = root.readLine(directory + "dimm_label");
            if (label.empty()) label.append(controller).append("/").append(name);
            Instance& module = data.add(label);
            module.set("Capacity", product(mebibytes, kKib * kKib));
            setControllerType(root.readLine(directory + "dimm_mem_type"), module);
        }
    }
}

constexpr const char* kSources[] = {"/sys"};

void gather(GatheringContext& context, GroupData& data) {
    const Smbios smbios(context.root());
    for (const SmbiosStructure* const structure : smbios.ofType(kMemoryModule)) {
        if (!isEmpty(*structure) || context.options().emptySlots) addModule(context, *structure, data);
    }
    if (smbios.damaged()) data.partial("smbios-broken");
    if (!smbios.structures().empty()) return;
    addFromControllers(context.root(), data);
    if (data.instances().empty() && !hasSmbios(context.root())) data.notApplicable("no-smbios");
}

}  // namespace

constexpr Group kMemoryModules{.displayName = "Memory Modules",
                               .xmlName = "MemoryModules",
                               .fields = schema::kMemoryModules.fields,
                               .gather = gather,
                               .sources = kSources};

}  // namespace toolkit::quorvah
