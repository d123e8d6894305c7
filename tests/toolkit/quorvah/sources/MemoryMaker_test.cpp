#include "toolkit/quorvah/sources/MemoryMaker.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(MemoryMaker, NamesTheMakerInEveryFormOfItsCode) {
    const std::pair<const char*, const char*> cases[] = {
        {"80CE", "Samsung"},
        {"0x80CE000080CE", "Samsung"},
        {"00CE00B300CE", "Samsung"},
        {"802C0000802C", "Micron"},
        {"7F98000000000000", "Kingston"},
        {"CE00000000000000", "Samsung"},
        {"859B", "Crucial"},
        {"04cd", "G.Skill"},
    };
    for (const auto& [text, name] : cases) EXPECT_EQ(name, memoryMaker(std::string(text))) << text;
}

TEST(MemoryMaker, KeepsAnyOtherText) {
    for (const char* const text :
         {"Samsung", "", "80C", "804E", "FFFF", "80CE000080CE000080CE000080CE000080CE", "0x", "7F7F7F7F"})
        EXPECT_EQ(text, memoryMaker(std::string(text)));
}

}  // namespace
}  // namespace toolkit::quorvah
