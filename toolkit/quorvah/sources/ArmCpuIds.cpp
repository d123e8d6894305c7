#include "toolkit/quorvah/sources/ArmCpuIds.h"

#include <algorithm>
#include <span>

namespace toolkit::quorvah {

namespace {

struct Entry {
    std::string_view id;
    std::string_view name;
};

constexpr Entry kImplementers[] = {
    {"41", "ARM"},       {"42", "Broadcom"},  {"43", "Cavium"},   {"44", "DEC"},    {"46", "Fujitsu"},
    {"48", "HiSilicon"}, {"49", "Infineon"},  {"4d", "Motorola"}, {"4e", "NVIDIA"}, {"50", "APM"},
    {"51", "Qualcomm"},  {"53", "Samsung"},   {"56", "Marvell"},  {"61", "Apple"},  {"66", "Faraday"},
    {"69", "Intel"},     {"6d", "Microsoft"}, {"70", "Phytium"},  {"c0", "Ampere"},
};

constexpr Entry kArm[] = {
    {"b76", "ARM1176"},      {"c05", "Cortex-A5"},    {"c07", "Cortex-A7"},   {"c08", "Cortex-A8"},
    {"c09", "Cortex-A9"},    {"c0d", "Cortex-A17"},   {"c0e", "Cortex-A17"},  {"c0f", "Cortex-A15"},
    {"d01", "Cortex-A32"},   {"d02", "Cortex-A34"},   {"d03", "Cortex-A53"},  {"d04", "Cortex-A35"},
    {"d05", "Cortex-A55"},   {"d06", "Cortex-A65"},   {"d07", "Cortex-A57"},  {"d08", "Cortex-A72"},
    {"d09", "Cortex-A73"},   {"d0a", "Cortex-A75"},   {"d0b", "Cortex-A76"},  {"d0c", "Neoverse-N1"},
    {"d0d", "Cortex-A77"},   {"d0e", "Cortex-A76AE"}, {"d40", "Neoverse-V1"}, {"d41", "Cortex-A78"},
    {"d42", "Cortex-A78AE"}, {"d43", "Cortex-A65AE"}, {"d44", "Cortex-X1"},   {"d46", "Cortex-A510"},
    {"d47", "Cortex-A710"},  {"d48", "Cortex-X2"},    {"d49", "Neoverse-N2"}, {"d4a", "Neoverse-E1"},
    {"d4b", "Cortex-A78C"},  {"d4c", "Cortex-X1C"},   {"d4d", "Cortex-A715"}, {"d4e", "Cortex-X3"},
    {"d4f", "Neoverse-V2"},  {"d80", "Cortex-A520"},  {"d81", "Cortex-A720"}, {"d82", "Cortex-X4"},
    {"d84", "Neoverse-V3"},  {"d85", "Cortex-X925"},  {"d87", "Cortex-A725"}, {"d8e", "Neoverse-N3"},
};

constexpr Entry kBroadcom[] = {{"100", "Brahma-B53"}, {"516", "ThunderX2"}};
constexpr Entry kCavium[] = {{"0a0", "ThunderX"},
                             {"0a1", "ThunderX-88XX"},
                             {"0a2", "ThunderX-81XX"},
                             {"0a3", "ThunderX-83XX"},
                             {"0af", "ThunderX2-99xx"}};
constexpr Entry kFujitsu[] = {{"001", "A64FX"}};
constexpr Entry kHiSilicon[] = {{"d01", "TaiShan-v110"}, {"d02", "TaiShan-v120"}};
constexpr Entry kNvidia[] = {{"000", "Denver"}, {"003", "Denver 2"}, {"004", "Carmel"}};
constexpr Entry kApm[] = {{"000", "X-Gene"}};
constexpr Entry kQualcomm[] = {{"001", "Oryon"},         {"201", "Kryo"},
                               {"205", "Kryo"},          {"211", "Kryo"},
                               {"800", "Kryo-2XX-Gold"}, {"801", "Kryo-2XX-Silver"},
                               {"802", "Kryo-3XX-Gold"}, {"803", "Kryo-3XX-Silver"},
                               {"804", "Kryo-4XX-Gold"}, {"805", "Kryo-4XX-Silver"},
                               {"c00", "Falkor"}};
constexpr Entry kApple[] = {{"020", "Icestorm-M1"},     {"021", "Firestorm-M1"},
                            {"022", "Icestorm-M1-Pro"}, {"023", "Firestorm-M1-Pro"},
                            {"024", "Icestorm-M1-Max"}, {"025", "Firestorm-M1-Max"},
                            {"030", "Blizzard-M2"},     {"031", "Avalanche-M2"}};
constexpr Entry kPhytium[] = {{"660", "FTC660"}, {"661", "FTC661"}, {"662", "FTC662"}, {"663", "FTC663"}};
constexpr Entry kAmpere[] = {{"ac3", "Ampere-1"}, {"ac4", "Ampere-1a"}};

std::span<const Entry> partsOf(std::string_view implementer) {
    if (implementer == "41") return kArm;
    if (implementer == "42") return kBroadcom;
    if (implementer == "43") return kCavium;
    if (implementer == "46") return kFujitsu;
    if (implementer == "48") return kHiSilicon;
    if (implementer == "4e") return kNvidia;
    if (implementer == "50") return kApm;
    if (implementer == "51") return kQualcomm;
    if (implementer == "61") return kApple;
    if (implementer == "70") return kPhytium;
    return implementer == "c0" ? std::span<const Entry>(kAmpere) : std::span<const Entry>();
}

std::string_view nameIn(std::span<const Entry> entries, std::string_view id) {
    const auto found = std::ranges::find(entries, id, &Entry::id);
    return found == entries.end() ? std::string_view() : found->name;
}

}  // namespace

std::string_view armImplementer(std::string_view implementer) {
    return nameIn(kImplementers, implementer);
}

std::string_view armPart(std::string_view implementer, std::string_view part) {
    return nameIn(partsOf(implementer), part);
}

}  // namespace toolkit::quorvah
