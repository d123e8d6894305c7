#include "toolkit/quorvah/sources/SmbiosNames.h"

#include <array>
#include <cstddef>

namespace toolkit::quorvah {

namespace {

constexpr std::array<std::string_view, 47> kTypes = {"BIOS Information",
                                                     "System Information",
                                                     "Baseboard Information",
                                                     "System Enclosure or Chassis",
                                                     "Processor Information",
                                                     "Memory Controller Information",
                                                     "Memory Module Information",
                                                     "Cache Information",
                                                     "Port Connector Information",
                                                     "System Slots",
                                                     "On Board Devices Information",
                                                     "OEM Strings",
                                                     "System Configuration Options",
                                                     "BIOS Language Information",
                                                     "Group Associations",
                                                     "System Event Log",
                                                     "Physical Memory Array",
                                                     "Memory Device",
                                                     "32-Bit Memory Error Information",
                                                     "Memory Array Mapped Address",
                                                     "Memory Device Mapped Address",
                                                     "Built-in Pointing Device",
                                                     "Portable Battery",
                                                     "System Reset",
                                                     "Hardware Security",
                                                     "System Power Controls",
                                                     "Voltage Probe",
                                                     "Cooling Device",
                                                     "Temperature Probe",
                                                     "Electrical Current Probe",
                                                     "Out-of-Band Remote Access",
                                                     "Boot Integrity Services Entry Point",
                                                     "System Boot Information",
                                                     "64-Bit Memory Error Information",
                                                     "Management Device",
                                                     "Management Device Component",
                                                     "Management Device Threshold Data",
                                                     "Memory Channel",
                                                     "IPMI Device Information",
                                                     "System Power Supply",
                                                     "Additional Information",
                                                     "Onboard Devices Extended Information",
                                                     "Management Controller Host Interface",
                                                     "TPM Device",
                                                     "Processor Additional Information",
                                                     "Firmware Inventory Information",
                                                     "String Property"};

constexpr std::array<std::string_view, 37> kChassis = {"",
                                                       "Other",
                                                       "",
                                                       "Desktop",
                                                       "Low Profile Desktop",
                                                       "Pizza Box",
                                                       "Mini Tower",
                                                       "Tower",
                                                       "Portable",
                                                       "Laptop",
                                                       "Notebook",
                                                       "Hand Held",
                                                       "Docking Station",
                                                       "All in One",
                                                       "Sub Notebook",
                                                       "Space-saving",
                                                       "Lunch Box",
                                                       "Main Server Chassis",
                                                       "Expansion Chassis",
                                                       "SubChassis",
                                                       "Bus Expansion Chassis",
                                                       "Peripheral Chassis",
                                                       "RAID Chassis",
                                                       "Rack Mount Chassis",
                                                       "Sealed-case PC",
                                                       "Multi-system chassis",
                                                       "Compact PCI",
                                                       "Advanced TCA",
                                                       "Blade",
                                                       "Blade Enclosure",
                                                       "Tablet",
                                                       "Convertible",
                                                       "Detachable",
                                                       "IoT Gateway",
                                                       "Embedded PC",
                                                       "Mini PC",
                                                       "Stick PC"};

constexpr std::array<std::string_view, 7> kStates = {"",         "Other",          "", "Safe", "Warning",
                                                     "Critical", "Non-recoverable"};

// The standard's "None" means that nothing protects the chassis.
constexpr std::array<std::string_view, 6> kSecurity = {
    "", "Other", "", "None", "External interface locked out", "External interface enabled"};

constexpr std::array<std::string_view, 9> kWakeUps = {
    "",           "Other",        "",         "APM Timer",        "Modem Ring",
    "LAN Remote", "Power Switch", "PCI PME#", "AC Power Restored"};

constexpr std::array<std::string_view, 18> kForms = {
    "",     "Other",        "",     "SIMM",   "SIP",   "Chip",    "DIP", "ZIP", "Proprietary Card", "DIMM",
    "TSOP", "Row of chips", "RIMM", "SODIMM", "SRIMM", "FB-DIMM", "Die", "CAMM"};

constexpr std::array<std::string_view, 0x25> kMemoryTypes = {
    "",      "Other", "",       "DRAM",   "EDRAM",        "VRAM",   "SRAM",   "RAM",
    "ROM",   "Flash", "EEPROM", "FEPROM", "EPROM",        "CDRAM",  "3DRAM",  "SDRAM",
    "SGRAM", "RDRAM", "DDR",    "DDR2",   "DDR2 FB-DIMM", "",       "",       "",
    "DDR3",  "FBD2",  "DDR4",   "LPDDR",  "LPDDR2",       "LPDDR3", "LPDDR4", "Logical non-volatile device",
    "HBM",   "HBM2",  "DDR5",   "LPDDR5", "HBM3"};

constexpr std::array<std::string_view, 16> kDetails = {"",
                                                       "Other",
                                                       "",
                                                       "Fast-paged",
                                                       "Static column",
                                                       "Pseudo-static",
                                                       "RAMBUS",
                                                       "Synchronous",
                                                       "CMOS",
                                                       "EDO",
                                                       "Window DRAM",
                                                       "Cache DRAM",
                                                       "Non-volatile",
                                                       "Registered (Buffered)",
                                                       "Unbuffered (Unregistered)",
                                                       "LRDIMM"};

constexpr std::array<std::string_view, 8> kTechnologies = {
    "", "Other", "", "DRAM", "NVDIMM-N", "NVDIMM-F", "NVDIMM-P", "Intel Optane persistent memory"};

template <std::size_t count>
std::string_view entry(const std::array<std::string_view, count>& names, unsigned number) {
    return number < count ? names[number] : std::string_view();
}

}  // namespace

std::string_view smbiosTypeName(unsigned type) {
    if (type == 126) return "Inactive";
    if (type == 127) return "End Of Table";
    if (type >= 128) return "OEM-specific";
    return entry(kTypes, type);
}

std::string_view chassisTypeName(unsigned type) {
    return entry(kChassis, type);
}

std::string_view chassisStateName(unsigned state) {
    return entry(kStates, state);
}

std::string_view chassisSecurityName(unsigned status) {
    return entry(kSecurity, status);
}

std::string_view wakeUpName(unsigned type) {
    return entry(kWakeUps, type);
}

std::string_view memoryFormName(unsigned form) {
    return entry(kForms, form);
}

std::string_view memoryTypeName(unsigned type) {
    return entry(kMemoryTypes, type);
}

std::vector<std::string> memoryDetailNames(unsigned bits) {
    std::vector<std::string> names;
    for (unsigned bit = 0; bit < kDetails.size(); ++bit) {
        if ((bits >> bit & 1U) != 0 && !kDetails[bit].empty()) names.emplace_back(kDetails[bit]);
    }
    return names;
}

std::string_view memoryTechnologyName(unsigned technology) {
    return entry(kTechnologies, technology);
}

}  // namespace toolkit::quorvah
