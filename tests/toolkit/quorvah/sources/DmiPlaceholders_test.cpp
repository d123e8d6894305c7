#include "toolkit/quorvah/sources/DmiPlaceholders.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(DmiPlaceholders, IncludeTextsThatMakersLeave) {
    for (const char* const text : {"",
                                   "   ",
                                   "To be filled by O.E.M.",
                                   "TO BE FILLED BY O.E.M.",
                                   " to be filled by o.e.m. ",
                                   "Default string",
                                   "Not Specified",
                                   "System Serial Number",
                                   "Chassis Asset Tag",
                                   "None",
                                   "N/A",
                                   "123456789",
                                   "Unknown",
                                   "00000000-0000-0000-0000-000000000000",
                                   "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF",
                                   "ffffffff-ffff-ffff-ffff-ffffffffffff",
                                   "03000200-0400-0500-0006-000700080009",
                                   "........",
                                   "00000000",
                                   "xxxxxxxx",
                                   "System manufacturer",
                                   "Type1ProductConfigId",
                                   "Type2 - Board Asset Tag",
                                   "O.E.M",
                                   "TBD by OEM",
                                   "NO DATA",
                                   "Part Number",
                                   "<OUT OF SPEC>",
                                   "00020003-0004-0005-0006-000700080009",
                                   "9876543210",
                                   "BSN12345678901234567",
                                   "Manufacturer00",
                                   "SerNum3",
                                   "A1_PartNum0",
                                   "Array1_PartNumber1",
                                   "ModulePartNumber00"}) {
        EXPECT_TRUE(isPlaceholder(text)) << text;
    }
}

TEST(DmiPlaceholders, ExcludeSimilarValues) {
    for (const char* const text : {"0",
                                   "1234567",
                                   "12345678901",
                                   "None of these",
                                   "Default string 2",
                                   "ES-2630",
                                   "00000001",
                                   "FF00",
                                   "4c4c4544-0036-4a10-8052-b4c04f4b4d32",
                                   "Nonesuch",
                                   "Version 2",
                                   "Part Number 7",
                                   "03000200-0400-0500-0006-00070008000a",
                                   "11111111",
                                   "SN_PartNum0",
                                   "B1_SerNum0",
                                   "SerNum3A",
                                   "A1",
                                   "DIMM_A1",
                                   "Manufacturer Inc"}) {
        EXPECT_FALSE(isPlaceholder(text)) << text;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
