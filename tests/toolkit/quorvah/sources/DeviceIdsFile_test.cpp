#include "toolkit/quorvah/sources/DeviceIdsFile.h"

#include <gtest/gtest.h>

#include <string>

namespace toolkit::quorvah {
namespace {

constexpr char kIds[] =
    "#\n"
    "#\tVersion: 2023.04.10\n"
    "#\tDate:    2023-04-10 20:08:02\n"
    "\n"
    "1000  First Vendor\n"
    "\t0001  Plain device\n"
    "\t0002  Device with subsystems\n"
    "\t\t1000 1002  Own board\n"
    "\t\t2000 0001  Board of the second\n"
    "# a comment amid the entries\n"
    "\n"
    "\t0003  Device behind a comment\n"
    "2000  Second Vendor\n"
    "\t0001  Its device\n"
    "AT 0100  Not a vendor\n"
    "C 02  Network controller\n"
    "\t00  Ethernet controller\n"
    "\t\t01  Some interface\n"
    "\t80  Network controller\n"
    "C ff  Unassigned class\n";

TEST(DeviceIdsFile, VendorsAndDevicesAreFound) {
    DeviceIdsFile ids(kIds);
    EXPECT_EQ("First Vendor", ids.vendor("1000"));
    EXPECT_EQ("Second Vendor", ids.vendor("2000"));
    EXPECT_EQ("Plain device", ids.device("1000", "0001"));
    EXPECT_EQ("Device behind a comment", ids.device("1000", "0003"));
    EXPECT_EQ("Its device", ids.device("2000", "0001"));
    EXPECT_EQ("First Vendor", ids.vendor("1000"));
}

TEST(DeviceIdsFile, ADeviceIsSearchedBelowItsVendorOnly) {
    DeviceIdsFile ids(kIds);
    EXPECT_EQ("", ids.device("2000", "0002"));
    EXPECT_EQ("", ids.device("2000", "0003"));
    EXPECT_EQ("", ids.device("3000", "0001"));
}

TEST(DeviceIdsFile, SubsystemsAreFoundBelowTheirDevice) {
    DeviceIdsFile ids(kIds);
    EXPECT_EQ("Own board", ids.subsystem("1000", "0002", "1000", "1002"));
    EXPECT_EQ("Board of the second", ids.subsystem("1000", "0002", "2000", "0001"));
    EXPECT_EQ("", ids.subsystem("1000", "0001", "1000", "1002"));
    EXPECT_EQ("", ids.subsystem("1000", "0003", "1000", "1002"));
    EXPECT_EQ("", ids.device("1000", "1000"));
}

TEST(DeviceIdsFile, ClassesAreSeparateFromVendors) {
    DeviceIdsFile ids(kIds);
    EXPECT_EQ("Network controller", ids.baseClass("02"));
    EXPECT_EQ("Ethernet controller", ids.subclass("02", "00"));
    EXPECT_EQ("Network controller", ids.subclass("02", "80"));
    EXPECT_EQ("", ids.subclass("02", "01"));
    EXPECT_EQ("Unassigned class", ids.baseClass("ff"));
    EXPECT_EQ("", ids.subclass("ff", "00"));
    EXPECT_EQ("", ids.vendor("0100"));
    EXPECT_EQ("", ids.baseClass("10"));
}

TEST(DeviceIdsFile, UnknownAndEmptyIdsHaveNoName) {
    DeviceIdsFile ids(kIds);
    for (const char* const id : {"", "9999", "100", "10001", "first", "#"})
        EXPECT_EQ("", ids.vendor(id)) << id;
    EXPECT_EQ("", ids.device("", ""));
    EXPECT_EQ("", ids.device("1000", ""));
    EXPECT_EQ("", ids.subsystem("1000", "0002", "", ""));
    EXPECT_EQ("", ids.subclass("02", ""));
}

TEST(DeviceIdsFile, TheVersionIsInTheHeader) {
    EXPECT_EQ("2023.04.10", DeviceIdsFile(kIds).version());
    EXPECT_EQ("", DeviceIdsFile("").version());
    EXPECT_EQ("", DeviceIdsFile("# no such line\n1000  First\n# Version: 7\n").version());
}

TEST(DeviceIdsFile, TheFirstLineCanBeAVendorAndTheLastLackItsLineEnd) {
    DeviceIdsFile ids("1000  First\r\n\t0001  Device\r\n2000  Last");
    EXPECT_EQ("First", ids.vendor("1000"));
    EXPECT_EQ("Device", ids.device("1000", "0001"));
    EXPECT_EQ("Last", ids.vendor("2000"));
}

TEST(DeviceIdsFile, ATruncatedFileGivesTruncatedNames) {
    const std::string text = kIds;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const std::string cut = text.substr(0, length);
        DeviceIdsFile ids(cut);
        EXPECT_EQ(0U, std::string("Second Vendor").find(ids.vendor("2000"))) << length;
        EXPECT_EQ(0U, std::string("Board of the second").find(ids.subsystem("1000", "0002", "2000", "0001")))
            << length;
        EXPECT_EQ(0U, std::string("Ethernet controller").find(ids.subclass("02", "00"))) << length;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
