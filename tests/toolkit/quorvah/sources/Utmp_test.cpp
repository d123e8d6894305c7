#include "toolkit/quorvah/sources/Utmp.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

std::string utmpRecord(int type, unsigned process, bool bigEndian, std::size_t size) {
    std::string record(size, '\0');
    record[bigEndian ? 1 : 0] = static_cast<char>(type);
    for (std::size_t i = 0; i < 4; ++i) {
        record[4 + (bigEndian ? 3 - i : i)] = static_cast<char>(process >> (8 * i) & 0xFFU);
    }
    return record;
}

TEST(Utmp, ListsTheSessionsOfAnyMachine) {
    for (const bool bigEndian : {false, true}) {
        for (const std::size_t size : {std::size_t{384}, std::size_t{400}}) {
            const std::string utmp = utmpRecord(2, 1, bigEndian, size) +
                                     utmpRecord(7, 70000, bigEndian, size) +
                                     utmpRecord(8, 2, bigEndian, size) + utmpRecord(7, 3, bigEndian, size);
            EXPECT_EQ(userSessions(utmp), (std::vector<unsigned>{70000, 3})) << bigEndian << size;
        }
    }
}

TEST(Utmp, SkipsATruncatedLastRecord) {
    const std::string record = utmpRecord(7, 5, false, 384);
    EXPECT_EQ(userSessions(record + record.substr(0, 100)), (std::vector<unsigned>{5}));
    EXPECT_TRUE(userSessions(record.substr(0, 383)).empty());
    EXPECT_TRUE(userSessions("").empty());
}

TEST(Utmp, ASystemWithoutTheFileHasNoCount) {
    const ScratchDir tree;
    EXPECT_EQ(countUsers(Root(tree.path().string())), std::nullopt);
    tree.write("var/run/utmp", "");
    EXPECT_EQ(countUsers(Root(tree.path().string())), std::size_t{0});
}

}  // namespace
}  // namespace toolkit::quorvah
