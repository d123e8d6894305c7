#include <gtest/gtest.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/toolkit/quorvis/ElfBuilder.h"
#include "tests/toolkit/quorvis/LeafTester.h"

namespace toolkit::quorvis {
namespace {

class ElfLeaf : public ::testing::Test {
  protected:
    void write(const std::string& content) { tester_.tree.write("lib/l.so", content); }

    LeafResult ask(LeafTester::Attributes attributes = {}, std::vector<Capture> captures = {}) {
        attributes.emplace_back(Attribute::Path, "/lib/l.so");
        return tester_.ask(LeafKind::Elf, std::move(attributes), std::move(captures));
    }
    bool passes(Attribute attribute, const std::string& value) {
        const LeafResult result = ask({{attribute, value}});
        EXPECT_FALSE(result.incomplete);
        return !result.items.empty();
    }

    LeafTester tester_;
};

TEST_F(ElfLeaf, AllClassesAndByteOrdersGiveTheSameValues) {
    const std::tuple<bool, bool, std::uint64_t, const char*> kCases[] = {
        {true, true, EM_X86_64, "x86_64"},
        {true, false, EM_S390, "s390x"},
        {false, true, EM_ARM, "armv7l"},
        {false, false, EM_PPC, "ppc"},
    };
    for (const auto& [wide, littleEndian, machine, name] : kCases) {
        ElfBuilder builder;
        builder.wide = wide;
        builder.littleEndian = littleEndian;
        builder.machine = machine;
        write(builder.build());
        const LeafResult result = ask();
        ASSERT_EQ(1U, result.items.size()) << name;
        EXPECT_TRUE(result.events.empty()) << name;
        EXPECT_EQ(name, LeafTester::first(result, "machine"));
        EXPECT_EQ("/lib/l.so", LeafTester::first(result, "path"));
        EXPECT_EQ("libproduct.so.3", LeafTester::first(result, "soname"));
        EXPECT_EQ("0123abcdef", LeafTester::first(result, "buildId"));
        EXPECT_EQ("/lib/l.so", result.items[0].source);
        EXPECT_TRUE(passes(Attribute::Machine, name));
        EXPECT_FALSE(passes(Attribute::Machine, "aarch64"));
        EXPECT_TRUE(passes(Attribute::Needed, "libm.so.6"));
        EXPECT_EQ(1U, ask({{Attribute::Regex, "Product 3"}}).items.size()) << name;
    }
}

TEST_F(ElfLeaf, AllTestsMustPass) {
    write(ElfBuilder().build());
    EXPECT_TRUE(passes(Attribute::Soname, "libproduct.so.3"));
    EXPECT_FALSE(passes(Attribute::Soname, "libproduct.so"));
    EXPECT_TRUE(passes(Attribute::Needed, "libc.so.6"));
    EXPECT_FALSE(passes(Attribute::Needed, "libproduct.so.3"));
    EXPECT_TRUE(passes(Attribute::BuildId, "0123ABCDEF"));
    EXPECT_FALSE(passes(Attribute::BuildId, "0123abcde"));
    EXPECT_TRUE(passes(Attribute::Section, ".rodata"));
    EXPECT_FALSE(passes(Attribute::Section, ".rodat"));
    EXPECT_FALSE(passes(Attribute::Section, ".bss")) << "has no content";
}

TEST_F(ElfLeaf, CapturesComeFromOneSectionWithoutDuplicates) {
    write(ElfBuilder().build());
    const LeafResult result = ask({{Attribute::Regex, "Product ([0-9.]+)"}}, {{1, "version"}});
    ASSERT_EQ(2U, result.items.size());
    EXPECT_EQ("3.1.4", *result.items[0].find("version"));
    EXPECT_EQ("2.0", *result.items[1].find("version"));
    EXPECT_EQ("libproduct.so.3", *result.items[1].find("soname"));
    EXPECT_TRUE(ask({{Attribute::Regex, "libproduct"}}).items.empty()) << "stands elsewhere in the file";
    EXPECT_EQ(1U, ask({{Attribute::Regex, "shstrtab"}, {Attribute::Section, ".shstrtab"}}).items.size());
}

TEST_F(ElfLeaf, WithoutSegmentsTheBuildIdComesFromTheSections) {
    ElfBuilder builder;
    builder.segments = false;
    write(builder.build());
    EXPECT_EQ("0123abcdef", LeafTester::first(ask(), "buildId"));
    EXPECT_EQ("-", LeafTester::first(ask(), "soname"));
}

TEST_F(ElfLeaf, WithoutSectionsTheSegmentsAreUsed) {
    ElfBuilder builder;
    builder.sections = false;
    write(builder.build());
    EXPECT_EQ("libproduct.so.3", LeafTester::first(ask(), "soname"));
    const LeafResult result = ask({{Attribute::Regex, "Product"}});
    EXPECT_TRUE(result.items.empty());
    EXPECT_FALSE(result.incomplete);
}

TEST_F(ElfLeaf, OtherFilesAreFalse) {
    for (const char* content : {"", "\x7f",
                                "\x7f"
                                "EL",
                                "#!/bin/sh\n"}) {
        write(content);
        const LeafResult result = ask();
        EXPECT_TRUE(result.items.empty());
        EXPECT_FALSE(result.incomplete);
    }
    EXPECT_FALSE(tester_.ask(LeafKind::Elf, {{Attribute::Path, "/none"}}).incomplete);
    EXPECT_FALSE(tester_.ask(LeafKind::Elf, {{Attribute::Path, "/lib"}}).incomplete) << "a directory";
}

TEST_F(ElfLeaf, ALargeSectionIsNotRead) {
    write(ElfBuilder().build());
    tester_.settings.fileSystem.maxContentSize = 10;
    EXPECT_FALSE(ask({{Attribute::Regex, "Product"}}).items.empty()) << "it is read in pieces";
    tester_.settings.fileSystem.maxHashedSize = 10;
    const LeafResult result = ask({{Attribute::Regex, "Product"}});
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::LimitBytes}, LeafTester::codes(result));
    EXPECT_FALSE(ask().items.empty()) << "nothing of it is needed";
}

TEST_F(ElfLeaf, SeveralSectionsAreSearched) {
    write(ElfBuilder().build());
    const auto found = [this](const std::string& sections, const std::string& regex) {
        const LeafResult result = ask({{Attribute::Section, sections}, {Attribute::Regex, regex}});
        EXPECT_FALSE(result.incomplete);
        return result.items.size();
    };
    EXPECT_EQ(1U, found(".none .rodata", "Product 3"));
    EXPECT_EQ(1U, found(".rodata .note", "GNU"));
    EXPECT_EQ(0U, found(".none .note", "Product 3"));
    EXPECT_EQ(1U, ask({{Attribute::Section, ".none .note"}}).items.size());
    EXPECT_EQ(0U, ask({{Attribute::Section, ".none .bss"}}).items.size());
}

TEST_F(ElfLeaf, TruncatedFilesGiveNoWrongValues) {
    for (const bool wide : {false, true}) {
        ElfBuilder builder;
        builder.wide = wide;
        const std::string whole = builder.build();
        write(whole);
        for (std::size_t size = whole.size(); size-- > 0;) {
            std::filesystem::resize_file(tester_.tree.path() / "lib/l.so", size);
            // The section table is at the end of the file.
            const LeafResult found = ask({{Attribute::Regex, "Product ([0-9.]+)"}}, {{1, "version"}});
            EXPECT_TRUE(found.items.empty()) << size;
            EXPECT_EQ(size >= 4, found.incomplete) << size;
            const LeafResult soname = ask({{Attribute::Soname, "libproduct.so.3"}});
            EXPECT_TRUE(!soname.items.empty() || soname.incomplete || size < 4) << size;
        }
    }
}

TEST_F(ElfLeaf, DamagedBytesAreHarmless) {
    const std::string whole = ElfBuilder().build();
    write(whole);
    std::fstream file(tester_.tree.path() / "lib/l.so", std::ios::in | std::ios::out | std::ios::binary);
    const auto put = [&file](std::size_t at, char byte) {
        file.seekp(static_cast<std::streamoff>(at)).put(byte).flush();
    };
    int found = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\x7f', '\xff'}) {
            put(at, byte);
            const LeafResult result = ask({{Attribute::Regex, "Product ([0-9.]+)"}}, {{1, "version"}});
            found += LeafTester::first(result, "version") == "3.1.4" ? 1 : 0;
            ask({{Attribute::Needed, "none"}});
        }
        put(at, whole[at]);
    }
    EXPECT_TRUE(file.good());
    // Most bytes do not affect the result.
    EXPECT_LT(static_cast<int>(whole.size()), found);
}

TEST_F(ElfLeaf, ALibraryOfTheLiveSystemIsRead) {
    utsname names{};
    ASSERT_EQ(0, ::uname(&names));
    // A copy in a directory that all users may search. The build directory may not be one.
    const std::string copy = "/tmp/zavtest_elf_" + std::to_string(::getpid());
    std::filesystem::copy_file("/proc/self/exe", copy);
    const LeafResult result = tester_.askLiveSystem(LeafKind::Elf,
                                                    {{Attribute::Path, copy},
                                                     {Attribute::Machine, names.machine},
                                                     {Attribute::Needed, "libc.so.6"},
                                                     {Attribute::Regex, "/(ElfLeaf_test)\\.cpp"}},
                                                    {{1, "which"}});
    std::filesystem::remove(copy);
    EXPECT_EQ("ElfLeaf_test", LeafTester::first(result, "which")) << "where its tests stand";
    EXPECT_TRUE(result.events.empty());
}

}  // namespace
}  // namespace toolkit::quorvis
