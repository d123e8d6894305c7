#include "intake/ScannerEnvironment.h"

#include <gtest/gtest.h>

#include <vector>

namespace zav::test {
namespace {

using namespace std::string_literals;

std::string blockOf(std::vector<const char*> entries, const std::string& directory = "/opt/zav/bin") {
    entries.push_back(nullptr);
    return scannerEnvironment(entries.data(), directory);
}

TEST(ScannerEnvironment, SearchPathIsAddedAtTheEndWhereNoEntryHoldsIt) {
    EXPECT_EQ(blockOf({}), "DYLD_LIBRARY_PATH=/opt/zav/bin\0\0\0"s);
    EXPECT_EQ(blockOf({"A=1", "B="}), "A=1\0B=\0DYLD_LIBRARY_PATH=/opt/zav/bin\0\0\0"s);
    EXPECT_EQ(scannerEnvironment(nullptr, "/x"), "DYLD_LIBRARY_PATH=/x\0\0\0"s);
}

TEST(ScannerEnvironment, DirectoryIsPrependedToTheSearchPath) {
    EXPECT_EQ(blockOf({"DYLD_LIBRARY_PATH=/usr/lib"}), "DYLD_LIBRARY_PATH=/opt/zav/bin:/usr/lib\0\0\0\0"s);
    EXPECT_EQ(blockOf({"A=1", "DYLD_LIBRARY_PATH=/usr/lib:/lib", "B=2"}),
              "A=1\0DYLD_LIBRARY_PATH=/opt/zav/bin:/usr/lib:/lib\0B=2\0\0\0\0"s);
    EXPECT_EQ(blockOf({"DYLD_LIBRARY_PATH="}), "DYLD_LIBRARY_PATH=/opt/zav/bin:\0\0\0\0"s);
}

TEST(ScannerEnvironment, EverySearchPathIsRewritten) {
    EXPECT_EQ(blockOf({"DYLD_LIBRARY_PATH=/a", "X=1", "DYLD_LIBRARY_PATH=/b"}, "/d"),
              "DYLD_LIBRARY_PATH=/d:/a\0X=1\0DYLD_LIBRARY_PATH=/d:/b\0\0\0\0"s);
}

TEST(ScannerEnvironment, OnlyTheExactNameIsTheSearchPath) {
    for (const char* const entry : {"DYLD_LIBRARY_PATH", "DYLD_LIBRARY_PATH_2=/a", "dyld_library_path=/a",
                                    "XDYLD_LIBRARY_PATH=/a", " DYLD_LIBRARY_PATH=/a", "LD_LIBRARY_PATH=/a",
                                    "DYLD_LIBRARY_PAT", "A=DYLD_LIBRARY_PATH=/a", "=", "A"}) {
        EXPECT_EQ(blockOf({entry}, "/d"), entry + "\0DYLD_LIBRARY_PATH=/d\0\0\0"s) << entry;
    }
}

TEST(ScannerEnvironment, DirectoryIsTakenAsItIs) {
    EXPECT_EQ(blockOf({}, ""), "DYLD_LIBRARY_PATH=\0\0\0"s);
    EXPECT_EQ(blockOf({"DYLD_LIBRARY_PATH=/a"}, ""), "DYLD_LIBRARY_PATH=:/a\0\0\0\0"s);
    EXPECT_EQ(blockOf({}, "/a b:\xE4/"), "DYLD_LIBRARY_PATH=/a b:\xE4/\0\0\0"s);
}

}  // namespace
}  // namespace zav::test
