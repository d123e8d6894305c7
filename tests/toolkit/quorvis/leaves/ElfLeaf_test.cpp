#include <gtest/gtest.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/support/Program.h"
#include "tests/toolkit/quorvis/ElfBuilder.h"
#include "tests/toolkit/quorvis/LeafTester.h"
#include "tests/toolkit/quorvis/ProgramsWithModules.h"

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
    EXPECT_EQ(1U, ask({{Attribute::Regex, "Product 3"}}).items.size());
    const LeafResult comment = ask({{Attribute::Section, ".comment"}, {Attribute::Regex, "Product 3"}});
    EXPECT_TRUE(comment.items.empty()) << "no segment has it";
    EXPECT_FALSE(comment.incomplete);
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

// A program with a note about its package.
std::string programWithNote(const std::string& text) {
    std::string note = littleEndianBytes(4, 4) + littleEndianBytes(text.size(), 4) +
                       littleEndianBytes(0xCAFE1A7E, 4) + std::string("FDO\0", 4) + text;
    note.resize((note.size() + 3) / 4 * 4, '\0');
    std::string program = elfProgram(note);
    program.replace(64, 4, littleEndianBytes(PT_NOTE, 4));
    return program;
}

TEST_F(ElfLeaf, ThePackageNoteGivesValues) {
    write(programWithNote(
        R"({"type": "rpm", "name": "coreutils", "version": "9.4-6.fc40", "architecture": "x86_64",)"
        R"("osCpe": "cpe:/o:fedoraproject:fedora:40", "debugInfoUrl": "https://d.example/",)"
        R"("os": "fedora", "osVersion": "40", "appCpe": "cpe:2.3:a:gnu:coreutils:9.4", "x": 1})"));
    const LeafResult result = ask();
    const std::pair<const char*, const char*> expected[] = {
        {"noteType", "rpm"},
        {"noteName", "coreutils"},
        {"noteVersion", "9.4-6.fc40"},
        {"noteArchitecture", "x86_64"},
        {"noteOs", "fedora"},
        {"noteOsVersion", "40"},
        {"noteOsCpe", "cpe:/o:fedoraproject:fedora:40"},
        {"noteAppCpe", "cpe:2.3:a:gnu:coreutils:9.4"},
        {"noteDebugInfoUrl", "https://d.example/"},
    };
    for (const auto& [name, value] : expected) EXPECT_EQ(value, LeafTester::first(result, name));
    EXPECT_TRUE(result.events.empty());
    const LeafResult captured = ask({}, {{1, "upstream", "noteVersion", "^([0-9.]+)-"}});
    EXPECT_EQ("9.4", LeafTester::first(captured, "upstream"));
    EXPECT_TRUE(ask({}, {{0, "x", "noteType", "^deb$"}}).items.empty());
}

TEST_F(ElfLeaf, ADamagedPackageNoteCostsItsValuesOnly) {
    for (const char* const text : {R"({"name": "a", "type")", "no JSON", "[1, 2"}) {
        write(programWithNote(text));
        const LeafResult result = ask();
        ASSERT_EQ(1U, result.items.size()) << text;
        EXPECT_FALSE(result.incomplete) << text;
        EXPECT_EQ("x86_64", LeafTester::first(result, "machine"));
        EXPECT_EQ("-", LeafTester::first(result, "noteName"));
        EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(result)) << text;
    }
    for (const char* const text : {"{}", "[]", R"({"type": "rpm"})", R"({"name": {"name": "a"}})"}) {
        write(programWithNote(text));
        EXPECT_EQ("-", LeafTester::first(ask(), "noteName")) << text;
        EXPECT_TRUE(ask().events.empty()) << text;
    }
}

TEST_F(ElfLeaf, SymbolVersionsAreSearchedFromTheNewestOn) {
    const std::string library = (tester_.tree.path() / "lib/l.so").string();
    tester_.tree.write("lib/l.c", "int first(void) { return 1; }\nint second(void) { return 2; }\n");
    tester_.tree.write("lib/l.map", "LIB_1.0 { global: first; };\nLIB_1.12 { global: second; } LIB_1.0;\n");
    const std::string folder = library.substr(0, library.rfind('/') + 1);
    const zavtest::Finished compiled = zavtest::runProgram(
        "/usr/bin/cc", {"-shared", "-fPIC", "-nostdlib", "-Wl,-soname,l.so.1",
                        "-Wl,--version-script=" + folder + "l.map", "-o", library, folder + "l.c"});
    ASSERT_EQ(0, compiled.status) << compiled.errors;
    const auto found = [this](const std::string& regex) {
        std::string text;
        const LeafResult result =
            ask({{Attribute::Section, ".gnu.version_d"}, {Attribute::Regex, regex}}, {{1, "version"}});
        EXPECT_FALSE(result.incomplete);
        for (const Item& item : result.items) text += *item.find("version") + " ";
        return text;
    };
    EXPECT_EQ("1.12 1.0 ", found("^LIB_([0-9.]+)$"));
    EXPECT_EQ("1.0 ", found("^LIB_(1\\.0)$"));
    EXPECT_EQ("", found("(l\\.so)")) << "the library itself is no version";
    EXPECT_EQ(1U, ask({{Attribute::Section, ".gnu.version_d"}}).items.size());
    write(ElfBuilder().build());
    EXPECT_EQ("", found("(.*)"));
    EXPECT_TRUE(ask({{Attribute::Section, ".gnu.version_d"}}).items.empty());
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
