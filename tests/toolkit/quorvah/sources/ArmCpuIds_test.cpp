#include "toolkit/quorvah/sources/ArmCpuIds.h"

#include <gtest/gtest.h>

#include <utility>

namespace toolkit::quorvah {
namespace {

TEST(ArmCpuIds, PartsAreNamedPerImplementer) {
    EXPECT_EQ(armImplementer("41"), "ARM");
    EXPECT_EQ(armPart("41", "d0c"), "Neoverse-N1");
    EXPECT_EQ(armPart("48", "d01"), "TaiShan-v110");
    EXPECT_EQ(armPart("c0", "ac3"), "Ampere-1");
    EXPECT_EQ(armPart("41", "fff"), "");
    EXPECT_EQ(armPart("99", "d0c"), "");
    EXPECT_EQ(armImplementer(""), "");
}

TEST(ArmCpuIds, CoresOfAppleHaveTheNumbersOfTheirMaker) {
    const std::pair<const char*, const char*> parts[] = {
        {"001", "Cyclone"},         {"006", "Hurricane"},        {"00b", "Vortex"},
        {"012", "Lightning"},       {"020", "Icestorm-A14"},     {"021", "Firestorm-A14"},
        {"022", "Icestorm-M1"},     {"023", "Firestorm-M1"},     {"024", "Icestorm-M1-Pro"},
        {"028", "Icestorm-M1-Max"}, {"029", "Firestorm-M1-Max"}, {"032", "Blizzard-M2"},
        {"033", "Avalanche-M2"},    {"038", "Blizzard-M2-Max"},  {"039", "Avalanche-M2-Max"},
        {"042", "Sawtooth-M3"},     {"049", "Everest-M3-Max"}};
    for (const auto& [part, name] : parts) EXPECT_EQ(armPart("61", part), name) << part;
}

}  // namespace
}  // namespace toolkit::quorvah
