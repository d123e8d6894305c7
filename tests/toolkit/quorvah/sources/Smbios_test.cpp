#include "toolkit/quorvah/sources/Smbios.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvah/sources/SmbiosMemory.h"
#include "toolkit/quorvah/sources/SmbiosProcessor.h"

using toolkit::Root;
using toolkit::quorvah::Smbios;
using toolkit::quorvah::SmbiosStructure;

namespace {

using namespace std::string_literals;

// A structure followed by these strings.
std::string structure(unsigned type, unsigned handle, const std::string& fields,
                      const std::vector<std::string>& strings) {
    std::string bytes;
    bytes += static_cast<char>(type);
    bytes += static_cast<char>(4 + fields.size());
    bytes += static_cast<char>(handle & 0xFFU);
    bytes += static_cast<char>(handle >> 8U);
    bytes += fields;
    for (const std::string& string : strings) bytes += string + '\0';
    return bytes + (strings.empty() ? "\0\0"s : "\0"s);
}

std::string module(unsigned size, std::uint32_t extended) {
    std::string fields(0x20 - 4, '\0');
    fields[0x0C - 4] = static_cast<char>(size & 0xFFU);
    fields[0x0D - 4] = static_cast<char>(size >> 8U);
    for (std::size_t i = 0; i < 4; ++i) fields[0x1C - 4 + i] = static_cast<char>(extended >> (8 * i) & 0xFFU);
    return structure(17, 1, fields, {});
}

std::string processor(unsigned status, unsigned type, unsigned voltage) {
    std::string fields(0x28 - 4, '\0');
    fields[0x05 - 4] = static_cast<char>(type);
    fields[0x11 - 4] = static_cast<char>(voltage);
    fields[0x18 - 4] = static_cast<char>(status);
    return structure(4, 1, fields, {});
}

}  // namespace

TEST(Smbios, ReadsStructuresWithTheirStrings) {
    const Smbios smbios(structure(1, 0x0100, "\x01\x02"s, {"first", "second"}) + structure(3, 2, "", {}) +
                        structure(127, 3, "", {}) + structure(9, 4, "", {}));
    ASSERT_EQ(smbios.structures().size(), 3U) << "nothing counts behind the end of the table";
    const SmbiosStructure& first = smbios.structures()[0];
    EXPECT_EQ(first.type, 1U);
    EXPECT_EQ(first.handle, 0x100U);
    EXPECT_EQ(first.string(4), "first");
    EXPECT_EQ(first.string(5), "second");
    EXPECT_EQ(smbios.structures()[1].type, 3U);
    EXPECT_EQ(smbios.ofType(3).size(), 1U);
    EXPECT_TRUE(smbios.ofType(9).empty());
}

TEST(Smbios, FieldsBeyondAShortStructureAreUnknown) {
    const Smbios smbios(structure(1, 0, "\x05\x34\x12"s, {"only"}));
    const SmbiosStructure& only = smbios.structures().front();
    EXPECT_EQ(only.string(4), "") << "there is no fifth string";
    EXPECT_EQ(only.string(3), "") << "number 0 means no string";
    EXPECT_EQ(only.word(5), 0x1234U);
    EXPECT_EQ(only.word(6), 0U) << "half of the word is missing";
    EXPECT_EQ(only.number(100, 8), 0U);
    EXPECT_FALSE(only.has(6, 2));
    EXPECT_TRUE(only.has(5, 2));
}

TEST(Smbios, StopsAtATruncatedOrMalformedStructure) {
    const std::string good = structure(1, 0, "\x01"s, {"text"});
    const std::string cases[] = {
        "",
        "\x01"s,
        "\x01\x03\0\0\0\0"s,  // shorter than its own header
        "\x01\x40\0\0\0\0"s,  // longer than the table
        "\x01\x04\0\0"s,      // no strings
        "\x01\x04\0\0no end"s,
        "\x01\x04\0\0"
        "one\0"s,  // the last string is not followed by a second zero
        std::string(1000, '\xff'),
        std::string(1000, '\0'),
    };
    for (const std::string& broken : cases) {
        EXPECT_TRUE(Smbios(broken).structures().empty());
        EXPECT_EQ(Smbios(good + broken).structures().size(), 1U);
    }
}

TEST(Smbios, AcceptsATableTruncatedAnywhere) {
    const Root root(QUORVAH_TEST_TREES "/x86-server");
    const std::string table = root.read("/sys/firmware/dmi/tables/DMI").value();
    for (std::size_t length = 0; length <= table.size(); ++length) {
        const Smbios cut(table.substr(0, length));
        EXPECT_LE(cut.structures().size(), Smbios(root).structures().size());
        readSmbiosProcessors(cut);
        readSmbiosMemory(cut);
    }
}

TEST(Smbios, ReadsTheVersionOfBothEntryPoints) {
    const std::pair<std::string, const char*> cases[] = {{"_SM3_\x55\x18\x03\x02\x00"s, "3.2"},
                                                         {"_SM_\x55\x1f\x02\x08"s, "2.8"},
                                                         {"_SM_\x55"s, ""},
                                                         {"_XX_1234"s, ""}};
    for (const auto& [entryPoint, version] : cases) {
        const zavtest::ScratchDir tree;
        tree.write("sys/firmware/dmi/tables/smbios_entry_point", entryPoint);
        EXPECT_EQ(Smbios(Root(tree.path().string())).version(), version);
    }
}

TEST(Smbios, IsAssembledFromSingleEntriesWithoutTheTable) {
    const zavtest::ScratchDir tree;
    tree.write("sys/firmware/dmi/entries/17-10/raw", structure(17, 10, "", {"b"}));
    tree.write("sys/firmware/dmi/entries/17-9/raw", structure(17, 9, "", {"a"}));
    tree.write("sys/firmware/dmi/entries/127-0/raw", structure(127, 0, "", {}));
    tree.write("sys/firmware/dmi/entries/4-0/raw", structure(4, 4, "", {}));
    const Smbios smbios{Root(tree.path().string())};
    ASSERT_EQ(smbios.ofType(17).size(), 2U);
    EXPECT_EQ(smbios.ofType(17)[0]->handle, 9U);
    EXPECT_EQ(smbios.ofType(4).size(), 1U);
}

TEST(SmbiosMemory, ReadsEveryFormOfASize) {
    const std::tuple<unsigned, std::uint32_t, std::uint64_t> cases[] = {
        {0, 0, 0},
        {0xFFFF, 0, 0},
        {16384, 0, 16777216},
        {0x8000 | 512, 0, 512},
        {0x7FFF, 65536, 67108864},
        {0x7FFF, 0x80000000U | 32768, 33554432},
    };
    for (const auto& [size, extended, kib] : cases) {
        const Smbios smbios(module(size, extended));
        EXPECT_EQ(toolkit::quorvah::moduleSize(smbios.structures().front()), kib) << size;
    }
}

TEST(SmbiosMemory, UsesTheExtendedCapacityOfALargeArray) {
    std::string fields(0x17 - 4, '\0');
    fields[0x05 - 4] = 3;
    fields[0x06 - 4] = 5;
    fields[0x0A - 4] = '\x80';  // 80000000h: see the extended capacity
    fields[0x0D - 4] = 32;
    fields[0x0F - 4 + 5] = 0x06;  // 6 x 2^40 bytes
    const auto memory = toolkit::quorvah::readSmbiosMemory(Smbios(structure(16, 1, fields, {})));
    EXPECT_EQ(memory.maximumCapacity, std::uint64_t{6} << 30);
    EXPECT_EQ(memory.devices, 32U);
    EXPECT_EQ(memory.errorCorrection, "Single-bit ECC");
}

TEST(SmbiosMemory, IgnoresArraysOfVideoOrFlashMemory) {
    std::string fields(0x0F - 4, '\0');
    fields[0x05 - 4] = 4;
    fields[0x0D - 4] = 8;
    EXPECT_EQ(toolkit::quorvah::readSmbiosMemory(Smbios(structure(16, 1, fields, {}))).devices, 0U);
}

TEST(SmbiosProcessor, SkipsEmptySocketsAndOtherProcessors) {
    constexpr unsigned kCpu = 3;
    constexpr unsigned kDsp = 5;
    EXPECT_EQ(readSmbiosProcessors(Smbios(processor(0x41, kCpu, 0))).size(), 1U);
    EXPECT_TRUE(readSmbiosProcessors(Smbios(processor(0x01, kCpu, 0))).empty());
    EXPECT_TRUE(readSmbiosProcessors(Smbios(processor(0x41, kDsp, 0))).empty());
}

TEST(SmbiosProcessor, ReadsBothFormsOfAVoltage) {
    const std::pair<unsigned, unsigned> cases[] = {{0x80 | 12, 1200}, {1, 5000}, {2, 3300},
                                                   {4, 2900},         {3, 0},    {0, 0}};
    for (const auto& [byte, millivolts] : cases) {
        EXPECT_EQ(readSmbiosProcessors(Smbios(processor(0x41, 3, byte))).front().voltage, millivolts) << byte;
    }
}

TEST(SmbiosProcessor, NamesKnownSocketsAndAcceptsUnknownOnes) {
    const std::pair<unsigned, const char*> cases[] = {{0x03, "Daughter Board"},
                                                      {0x31, "Socket AM4"},
                                                      {0x36, "Socket LGA3647-1"},
                                                      {0x4F, "Socket LGA4710"},
                                                      {0x02, ""},
                                                      {0x50, ""},
                                                      {0xFF, ""}};
    for (const auto& [byte, name] : cases) {
        std::string table = processor(0x41, 3, 0);
        table[0x19] = static_cast<char>(byte);
        EXPECT_EQ(readSmbiosProcessors(Smbios(table)).front().upgrade, name) << byte;
    }
}
