#include "toolkit/quorvah/sources/ArmCpuIds.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace toolkit::quorvah
