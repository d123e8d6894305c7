#include "toolkit/quorvah/sources/ArmCpuIds.h"

#include <algorithm>
#include <span>

namespace toolkit::quorvah {

namespace {

struct Part {
    std::string_view id;
    std::string_view name;
};

constexpr Part kArm[] = {
    {"810", "ARM810"},       {"920", "ARM920"},       {"922", "ARM922"},        {"926", "ARM926"},
    {"940", "ARM940"},       {"946", "ARM946"},       {"966", "ARM966"},        {"a20", "ARM1020"},
    {"a22", "ARM1022"},      {"a26", "ARM1026"},      {"b02", "ARM11 MPCore"},  {"b36", "ARM1136"},
    {"b56", "ARM1156"},      {"b76", "ARM1176"},      {"c05", "Cortex-A5"},     {"c07", "Cortex-A7"},
    {"c08", "Cortex-A8"},    {"c09", "Cortex-A9"},    {"c0d", "Cortex-A17"},    {"c0e", "Cortex-A17"},
    {"c0f", "Cortex-A15"},   {"c14", "Cortex-R4"},    {"c15", "Cortex-R5"},     {"c17", "Cortex-R7"},
    {"c18", "Cortex-R8"},    {"c20", "Cortex-M0"},    {"c21", "Cortex-M1"},     {"c23", "Cortex-M3"},
    {"c24", "Cortex-M4"},    {"c27", "Cortex-M7"},    {"c60", "Cortex-M0+"},    {"d00", "Foundation"},
    {"d01", "Cortex-A32"},   {"d02", "Cortex-A34"},   {"d03", "Cortex-A53"},    {"d04", "Cortex-A35"},
    {"d05", "Cortex-A55"},   {"d06", "Cortex-A65"},   {"d07", "Cortex-A57"},    {"d08", "Cortex-A72"},
    {"d09", "Cortex-A73"},   {"d0a", "Cortex-A75"},   {"d0b", "Cortex-A76"},    {"d0c", "Neoverse-N1"},
    {"d0d", "Cortex-A77"},   {"d0e", "Cortex-A76AE"}, {"d0f", "AEMv8"},         {"d13", "Cortex-R52"},
    {"d14", "Cortex-R82AE"}, {"d15", "Cortex-R82"},   {"d16", "Cortex-R52+"},   {"d20", "Cortex-M23"},
    {"d21", "Cortex-M33"},   {"d22", "Cortex-M55"},   {"d23", "Cortex-M85"},    {"d24", "Cortex-M52"},
    {"d40", "Neoverse-V1"},  {"d41", "Cortex-A78"},   {"d42", "Cortex-A78AE"},  {"d43", "Cortex-A65AE"},
    {"d44", "Cortex-X1"},    {"d46", "Cortex-A510"},  {"d47", "Cortex-A710"},   {"d48", "Cortex-X2"},
    {"d49", "Neoverse-N2"},  {"d4a", "Neoverse-E1"},  {"d4b", "Cortex-A78C"},   {"d4c", "Cortex-X1C"},
    {"d4d", "Cortex-A715"},  {"d4e", "Cortex-X3"},    {"d4f", "Neoverse-V2"},   {"d80", "Cortex-A520"},
    {"d81", "Cortex-A720"},  {"d82", "Cortex-X4"},    {"d83", "Neoverse-V3AE"}, {"d84", "Neoverse-V3"},
    {"d85", "Cortex-X925"},  {"d87", "Cortex-A725"},  {"d88", "Cortex-A520AE"}, {"d89", "Cortex-A720AE"},
    {"d8a", "C1-Nano"},      {"d8b", "C1-Pro"},       {"d8c", "C1-Ultra"},      {"d8e", "Neoverse-N3"},
    {"d8f", "Cortex-A320"},  {"d90", "C1-Premium"}};
constexpr Part kBroadcom[] = {{"00f", "Brahma-B15"}, {"100", "Brahma-B53"}, {"516", "ThunderX2"}};
constexpr Part kDec[] = {{"a10", "SA110"}, {"a11", "SA1100"}};
constexpr Part kCavium[] = {
    {"0a0", "ThunderX"},        {"0a1", "ThunderX-88XX"},    {"0a2", "ThunderX-81XX"},
    {"0a3", "ThunderX-83XX"},   {"0af", "ThunderX2-99xx"},   {"0b0", "OcteonTX2"},
    {"0b1", "OcteonTX2-98XX"},  {"0b2", "OcteonTX2-96XX"},   {"0b3", "OcteonTX2-95XX"},
    {"0b4", "OcteonTX2-95XXN"}, {"0b5", "OcteonTX2-95XXMM"}, {"0b6", "OcteonTX2-95XXO"},
    {"0b8", "ThunderX3-T110"}};
constexpr Part kFujitsu[] = {{"001", "A64FX"}, {"003", "MONAKA"}};
constexpr Part kHiSilicon[] = {{"d01", "TaiShan-v110"},
                               {"d02", "TaiShan-v120"},
                               {"d06", "HIP12"},
                               {"d40", "Cortex-A76"},
                               {"d41", "Cortex-A77"}};
constexpr Part kNvidia[] = {{"000", "Denver"}, {"003", "Denver 2"}, {"004", "Carmel"}, {"010", "Olympus"}};
constexpr Part kApm[] = {{"000", "X-Gene"}};
constexpr Part kQualcomm[] = {{"001", "Oryon"},
                              {"00f", "Scorpion"},
                              {"02d", "Scorpion"},
                              {"04d", "Krait"},
                              {"06f", "Krait"},
                              {"200", "Kryo"},
                              {"201", "Kryo"},
                              {"205", "Kryo"},
                              {"211", "Kryo"},
                              {"800", "Kryo-2XX-Gold"},
                              {"801", "Kryo-2XX-Silver"},
                              {"802", "Kryo-3XX-Gold"},
                              {"803", "Kryo-3XX-Silver"},
                              {"804", "Kryo-4XX-Gold"},
                              {"805", "Kryo-4XX-Silver"},
                              {"c00", "Falkor"},
                              {"c01", "Saphira"}};
constexpr Part kSamsung[] = {
    {"001", "Exynos-M1"}, {"002", "Exynos-M3"}, {"003", "Exynos-M4"}, {"004", "Exynos-M5"}};
constexpr Part kMarvell[] = {{"131", "Feroceon-88FR131"}, {"581", "PJ4"}, {"584", "PJ4B-MP"}};
constexpr Part kApple[] = {
    {"000", "Swift"},           {"001", "Cyclone"},          {"002", "Typhoon"},
    {"003", "Typhoon-A8X"},     {"004", "Twister"},          {"005", "Twister-A9X"},
    {"006", "Hurricane"},       {"007", "Hurricane-A10X"},   {"008", "Monsoon"},
    {"009", "Mistral"},         {"00b", "Vortex"},           {"00c", "Tempest"},
    {"00f", "Tempest-M9"},      {"010", "Vortex-A12X"},      {"011", "Tempest-A12X"},
    {"012", "Lightning"},       {"013", "Thunder"},          {"020", "Icestorm-A14"},
    {"021", "Firestorm-A14"},   {"022", "Icestorm-M1"},      {"023", "Firestorm-M1"},
    {"024", "Icestorm-M1-Pro"}, {"025", "Firestorm-M1-Pro"}, {"026", "Thunder-M10"},
    {"028", "Icestorm-M1-Max"}, {"029", "Firestorm-M1-Max"}, {"030", "Blizzard-A15"},
    {"031", "Avalanche-A15"},   {"032", "Blizzard-M2"},      {"033", "Avalanche-M2"},
    {"034", "Blizzard-M2-Pro"}, {"035", "Avalanche-M2-Pro"}, {"036", "Sawtooth-A16"},
    {"037", "Everest-A16"},     {"038", "Blizzard-M2-Max"},  {"039", "Avalanche-M2-Max"},
    {"042", "Sawtooth-M3"},     {"043", "Everest-M3"},       {"044", "Sawtooth-M3-Pro"},
    {"045", "Everest-M3-Pro"},  {"048", "Sawtooth-M3-Max"},  {"049", "Everest-M3-Max"}};
constexpr Part kFaraday[] = {{"526", "FA526"}, {"626", "FA626"}};
constexpr Part kIntel[] = {{"200", "i80200"},     {"210", "PXA250A"},       {"212", "PXA210A"},
                           {"242", "i80321-400"}, {"243", "i80321-600"},    {"290", "PXA250B"},
                           {"292", "PXA210B"},    {"2c2", "i80321-400-B0"}, {"2c3", "i80321-600-B0"},
                           {"2d0", "PXA255"},     {"2d2", "PXA210C"},       {"411", "PXA27x"},
                           {"41c", "IPX425-533"}, {"41d", "IPX425-400"},    {"41f", "IPX425-266"},
                           {"682", "PXA32x"},     {"683", "PXA930"},        {"688", "PXA30x"},
                           {"689", "PXA31x"},     {"b11", "SA1110"},        {"c12", "IPX1200"}};
constexpr Part kMicrosoft[] = {{"d49", "Azure-Cobalt-100"}};
constexpr Part kPhytium[] = {{"303", "FTC310"}, {"660", "FTC660"}, {"661", "FTC661"}, {"662", "FTC662"},
                             {"663", "FTC663"}, {"664", "FTC664"}, {"862", "FTC862"}};
constexpr Part kAmpere[] = {{"ac3", "Ampere-1"}, {"ac4", "Ampere-1a"}, {"ac5", "Ampere-1b"}};

struct Implementer {
    std::string_view id;
    std::string_view name;
    std::span<const Part> parts;
};

constexpr Implementer kImplementers[] = {
    {"41", "ARM", kArm},         {"42", "Broadcom", kBroadcom},   {"43", "Cavium", kCavium},
    {"44", "DEC", kDec},         {"46", "Fujitsu", kFujitsu},     {"48", "HiSilicon", kHiSilicon},
    {"49", "Infineon", {}},      {"4d", "Motorola", {}},          {"4e", "NVIDIA", kNvidia},
    {"50", "APM", kApm},         {"51", "Qualcomm", kQualcomm},   {"53", "Samsung", kSamsung},
    {"56", "Marvell", kMarvell}, {"61", "Apple", kApple},         {"66", "Faraday", kFaraday},
    {"69", "Intel", kIntel},     {"6d", "Microsoft", kMicrosoft}, {"70", "Phytium", kPhytium},
    {"c0", "Ampere", kAmpere},
};

template <class Entries>
auto find(const Entries& entries, std::string_view id) -> decltype(&*std::begin(entries)) {
    const auto found = std::ranges::find_if(entries, [id](const auto& entry) { return entry.id == id; });
    return found == std::end(entries) ? nullptr : &*found;
}

}  // namespace

std::string_view armImplementer(std::string_view implementer) {
    const Implementer* const found = find(kImplementers, implementer);
    return found == nullptr ? std::string_view() : found->name;
}

std::string_view armPart(std::string_view implementer, std::string_view part) {
    const Implementer* const maker = find(kImplementers, implementer);
    const Part* const found = maker == nullptr ? nullptr : find(maker->parts, part);
    return found == nullptr ? std::string_view() : found->name;
}

}  // namespace toolkit::quorvah
