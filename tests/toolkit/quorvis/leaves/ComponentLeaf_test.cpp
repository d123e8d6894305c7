#include <elf.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <filesystem>

#include "tests/toolkit/quorvis/ArchiveBuilder.h"
#include "tests/toolkit/quorvis/BinaryFiles.h"
#include "tests/toolkit/quorvis/LeafTester.h"

namespace toolkit::quorvis {
namespace {

std::string put(std::uint64_t value, std::size_t width, bool big = false) {
    std::string bytes = littleEndianBytes(value, width);
    if (big) std::ranges::reverse(bytes);
    return bytes;
}

// A program for any machine with one writable segment at kBase and no sections.
constexpr std::uint64_t kBase = 0x400000;
std::string elfProgram(const std::string& data, bool wide = true, bool big = false) {
    const auto word = [&](std::uint64_t value) { return put(value, wide ? 8 : 4, big); };
    std::string file = ELFMAG;
    file += static_cast<char>(wide ? ELFCLASS64 : ELFCLASS32);
    file += static_cast<char>(big ? ELFDATA2MSB : ELFDATA2LSB);
    file += '\x01';
    file.resize(EI_NIDENT, '\0');
    file += put(ET_EXEC, 2, big) + put(EM_X86_64, 2, big) + put(1, 4, big) + word(0);
    file += word(wide ? 64 : 52) + word(0) + put(0, 4, big) + put(wide ? 64 : 52, 2, big);
    file += put(wide ? 56 : 32, 2, big) + put(1, 2, big) + put(0, 6, big);
    constexpr std::size_t kDataAt = 128;
    const std::string place = word(kDataAt) + word(kBase) + word(0) + word(data.size()) + word(data.size());
    file += wide ? put(PT_LOAD, 4, big) + put(PF_R | PF_W, 4, big) + place + word(16)
                 : put(PT_LOAD, 4, big) + place + put(PF_R | PF_W, 4, big) + word(16);
    file.resize(kDataAt, '\0');
    return file + data;
}

// A program for Windows with one section.
std::string windowsProgramWith(const std::string& name, const std::string& data) {
    std::string file = "MZ";
    file.resize(60, '\0');
    constexpr std::size_t kOptionalSize = 112;
    file += put(64, 4) + std::string("PE\0\0", 4) + put(0x8664, 2) + put(1, 2) + put(0, 12);
    file += put(kOptionalSize, 2) + put(0x22, 2) + put(0x20B, 2) + std::string(22, '\0') + put(kBase, 8);
    file.resize(64 + 24 + kOptionalSize, '\0');
    std::string paddedName = name;
    paddedName.resize(8, '\0');
    file += paddedName + put(data.size(), 4) + put(0x1000, 4) + put(data.size(), 4) + put(256, 4) +
            std::string(12, '\0') + put(0xC0000040, 4);
    file.resize(256, '\0');
    return file + data;
}

constexpr char kModules[] =
    "path\texample.com/tool/cmd/x\n"
    "mod\texample.com/tool\tv1.2.3\th1:abc=\n"
    "dep\tgolang.org/x/sys\tv0.1.0\th1:def=\n"
    "dep\tgithub.com/old/lib\tv1.0.0\n"
    "=>\tgithub.com/new/lib\tv2.0.0+incompatible\th1:ghi=\n"
    "dep\texample.com/local\tv3.0.0\n"
    "=>\t./local\n"
    "build\t-compiler=gc\n"
    "build\t-ldflags=\"-X 'main.a=b c'\"\n"
    "build\tvcs.revision=0123abc\n";
const std::string kFound =
    "main example.com/tool 1.2.3 pkg:golang/example.com/tool@v1.2.3\n"
    "dependency golang.org/x/sys 0.1.0 pkg:golang/golang.org/x/sys@v0.1.0\n"
    "dependency github.com/new/lib 2.0.0 pkg:golang/github.com/new/lib@v2.0.0%2Bincompatible\n"
    "dependency example.com/local - pkg:golang/example.com/local\n"
    "toolchain go 1.21.3 pkg:golang/stdlib@1.21.3\n";

std::string withSentinels(const std::string& modules) {
    return std::string(16, '\x01') + modules + std::string(16, '\x02');
}

std::string withLength(const std::string& text) {
    std::string length;
    std::size_t size = text.size();
    for (; size >= 128; size /= 128) length += static_cast<char>(size % 128 + 128);
    return length + static_cast<char>(size) + text;
}

// The build information since Go 1.18.
std::string inlineInfo(const std::string& version = "go1.21.3", const std::string& modules = kModules) {
    return std::string("\xff Go buildinf:", 14) + '\x08' + '\x02' + std::string(16, '\0') +
           withLength(version) + withLength(withSentinels(modules));
}

// The build information before Go 1.18, for a program at `address`.
std::string pointedInfo(std::uint64_t address, std::size_t width, bool big) {
    const std::string version = "go1.17.2";
    const std::string modules = withSentinels(kModules);
    const auto word = [&](std::uint64_t value) { return put(value, width, big); };
    std::string info =
        std::string("\xff Go buildinf:", 14) + static_cast<char>(width) + (big ? '\x01' : '\0');
    info += word(address + 32) + word(address + 32 + 2 * width);
    info.resize(32, '\0');
    const std::uint64_t textsAt = address + 32 + 4 * width;
    info += word(textsAt) + word(version.size()) + word(textsAt + version.size()) + word(modules.size());
    return info + version + modules;
}

std::string deflated(const std::string& text) {
    uLongf size = ::compressBound(text.size());
    std::string packed(size, '\0');
    if (::compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                   reinterpret_cast<const Bytef*>(text.data()), text.size()) != Z_OK)
        throw std::runtime_error("compress");
    packed.resize(size);
    return packed;
}

class ComponentLeaf : public ::testing::Test {
  protected:
    LeafResult ask(const std::string& format, LeafTester::Attributes attributes = {}) {
        attributes.emplace_back(Attribute::Path, "/f");
        attributes.emplace_back(Attribute::Format, format);
        return tester_.ask(LeafKind::Component, std::move(attributes));
    }
    LeafResult askOf(const std::string& content, const std::string& format,
                     LeafTester::Attributes attributes = {}) {
        std::filesystem::remove(tester_.tree.path() / "f");
        tester_.tree.write("f", content);
        return ask(format, std::move(attributes));
    }
    // "role name version purl" of each item, one per line. A missing value is "-".
    static std::string textOf(const LeafResult& result) {
        std::string text;
        for (const Item& item : result.items) {
            for (const char* const field : {"role", "name", "version", "purl"}) {
                const std::string* const value = item.find(field);
                text += (value == nullptr ? "-" : *value) + " ";
            }
            text.back() = '\n';
        }
        return text;
    }
    // Truncates the content to every length, and replaces each byte. No result may be wrong.
    void expectNoHarm(const std::string& content, const std::string& format, const std::string& found) {
        for (std::size_t size = 0; size < content.size(); ++size) {
            const LeafResult result = askOf(content.substr(0, size), format);
            EXPECT_TRUE(found.starts_with(textOf(result)) || result.incomplete) << size;
        }
        std::string changed = content;
        for (std::size_t at = 0; at < content.size(); ++at) {
            changed[at] = '\xff';
            EXPECT_LE(askOf(changed, format).items.size(), 20U) << at;
            changed[at] = content[at];
        }
    }

    LeafTester tester_;
};

TEST_F(ComponentLeaf, AProgramOfGoNamesItsModules) {
    const LeafResult result = askOf(quorvistest::elfFile(".go.buildinfo", inlineInfo(), ""), "go");
    EXPECT_EQ(kFound, textOf(result));
    EXPECT_TRUE(result.events.empty());
    EXPECT_EQ("/f", result.items.at(0).source);
    EXPECT_EQ("/f", *result.items.at(0).find("path"));
}

TEST_F(ComponentLeaf, AProgramOfGoWithoutSectionsNamesThemToo) {
    EXPECT_EQ(kFound, textOf(askOf(elfProgram(std::string(32, 'x') + inlineInfo()), "go")));
    EXPECT_EQ("", textOf(askOf(elfProgram(std::string(8, 'x') + inlineInfo()), "go"))) << "not aligned";
    EXPECT_EQ("", textOf(askOf(elfProgram("text"), "go")));
}

TEST_F(ComponentLeaf, OlderProgramsOfGoHavePointers) {
    std::string found = kFound;
    for (std::size_t at = found.find("1.21.3"); at != std::string::npos; at = found.find("1.21.3"))
        found.replace(at, 6, "1.17.2");
    for (const bool wide : {false, true}) {
        for (const bool big : {false, true}) {
            const std::string info = pointedInfo(kBase, wide ? 8 : 4, big);
            EXPECT_EQ(found, textOf(askOf(elfProgram(info, wide, big), "go"))) << wide << big;
        }
    }
    EXPECT_EQ(found, textOf(askOf(windowsProgramWith(".data", pointedInfo(kBase + 0x1000, 8, false)), "go")));
    EXPECT_TRUE(askOf(elfProgram(pointedInfo(kBase + 0x100000, 8, false)), "go").incomplete);
}

TEST_F(ComponentLeaf, AProgramOfGoForWindowsNamesItsModules) {
    EXPECT_EQ(kFound, textOf(askOf(windowsProgramWith(".data", std::string(16, '\0') + inlineInfo()), "go")));
}

TEST_F(ComponentLeaf, SettingsOfTheBuildAreFoundOnRequest) {
    const LeafResult result = askOf(elfProgram(inlineInfo()), "go", {{Attribute::Role, "setting"}});
    std::string text;
    for (const Item& item : result.items) text += *item.find("name") + " is " + *item.find("value") + "\n";
    EXPECT_EQ("-compiler is gc\n-ldflags is -X 'main.a=b c'\nvcs.revision is 0123abc\n", text);
    EXPECT_EQ(1U, ask("go", {{Attribute::Role, "setting"}, {Attribute::Name, "vcs.revision"}}).items.size());
}

TEST_F(ComponentLeaf, AnUnknownVersionIsNotReported) {
    EXPECT_EQ("main example.com/tool - pkg:golang/example.com/tool\n",
              textOf(askOf(elfProgram(inlineInfo("custom", "mod\texample.com/tool\t(devel)\t\n")), "go")));
    EXPECT_EQ("toolchain go 1.22-0123abc pkg:golang/stdlib@1.22-0123abc\n",
              textOf(askOf(elfProgram(inlineInfo("devel go1.22-0123abc Mon", "")), "go")));
    EXPECT_EQ("main example.com/a/cmd/b - pkg:golang/example.com/a/cmd/b\n",
              textOf(askOf(elfProgram(inlineInfo("x", "path\texample.com/a/cmd/b\n")), "go")))
        << "built without modules";
    EXPECT_EQ("", textOf(askOf(elfProgram(inlineInfo("x", "path\tcommand-line-arguments\n")), "go")));
}

TEST_F(ComponentLeaf, RoleNameAndVersionSelect) {
    const std::string content = elfProgram(inlineInfo());
    EXPECT_EQ(3U, askOf(content, "go", {{Attribute::Role, "dependency"}}).items.size());
    EXPECT_EQ(1U, askOf(content, "go", {{Attribute::Name, "golang.org/x/sys"}, {Attribute::Below, "0.2"}})
                      .items.size());
    const LeafResult newer =
        askOf(content, "go", {{Attribute::Role, "dependency"}, {Attribute::AtLeast, "0"}});
    EXPECT_EQ(2U, newer.items.size()) << "one has no version";
    EXPECT_FALSE(newer.incomplete);
}

TEST_F(ComponentLeaf, DamagedProgramsOfGoAreHarmless) {
    expectNoHarm(elfProgram(inlineInfo()), "go", kFound);
    expectNoHarm(elfProgram(pointedInfo(kBase, 8, false)), "go", "");
    expectNoHarm(windowsProgramWith(".data", inlineInfo()), "go", kFound);
}

constexpr char kCrates[] = R"({"packages": [
    {"name": "adler", "version": "1.0.2", "source": "crates.io"},
    {"name": "cc", "version": "1.0.80", "source": "crates.io", "kind": "build"},
    {"name": "tool", "version": "0.3.0+x", "source": "local", "dependencies": [0, 1], "root": true}]})";
constexpr char kFoundCrates[] =
    "dependency adler 1.0.2 pkg:cargo/adler@1.0.2\n"
    "build cc 1.0.80 pkg:cargo/cc@1.0.80\n"
    "main tool 0.3.0+x pkg:cargo/tool@0.3.0%2Bx\n";

TEST_F(ComponentLeaf, AProgramOfRustMayListItsCrates) {
    const std::string list = deflated(kCrates);
    EXPECT_EQ(kFoundCrates, textOf(askOf(quorvistest::elfFile(".dep-v0", list, ""), "rust")));
    EXPECT_EQ(kFoundCrates,
              textOf(askOf(windowsProgramWith(".dep-v0", list + std::string(100, '\0')), "rust")))
        << "padded";
    EXPECT_EQ("", textOf(askOf(quorvistest::elfFile(".rodata", list, ""), "rust")));
}

TEST_F(ComponentLeaf, ADamagedOrEndlessListOfCratesIsUnknown) {
    const std::string list = deflated(kCrates);
    const std::string endless = deflated("{\"packages\": [" + std::string(std::size_t{20} << 20, ' '));
    for (const std::string& content : {std::string("text"), list.substr(0, list.size() / 2), endless}) {
        const LeafResult result = askOf(quorvistest::elfFile(".dep-v0", content, ""), "rust");
        EXPECT_TRUE(result.items.empty());
        EXPECT_TRUE(result.incomplete);
        EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(result));
    }
    const LeafResult large =
        askOf(quorvistest::elfFile(".dep-v0", std::string((std::size_t{1} << 20) + 1, 'x'), ""), "rust");
    EXPECT_EQ(std::vector{EventCode::LimitBytes}, LeafTester::codes(large));
    expectNoHarm(quorvistest::elfFile(".dep-v0", list, ""), "rust", kFoundCrates);
}

TEST_F(ComponentLeaf, TooManyComponentsLeaveItIncomplete) {
    tester_.settings.fileSystem.maxMatches = 2;
    for (const auto& [format, content] :
         {std::pair{"go", elfProgram(inlineInfo())},
          std::pair{"rust", quorvistest::elfFile(".dep-v0", deflated(kCrates), "")}}) {
        const LeafResult result = askOf(content, format);
        EXPECT_EQ(2U, result.items.size()) << format;
        EXPECT_EQ(std::vector{EventCode::LimitMatches}, LeafTester::codes(result)) << format;
    }
}

TEST_F(ComponentLeaf, FilesOfOtherKindsAreFalse) {
    for (const char* const format : {"go", "rust"}) {
        for (const char* const content : {"", "MZ", "#!/bin/sh\n",
                                          "\x7f"
                                          "ELX"}) {
            const LeafResult result = askOf(content, format);
            EXPECT_TRUE(result.items.empty()) << format << content;
            EXPECT_FALSE(result.incomplete) << format << content;
        }
    }
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(ask("cobol")));
    std::filesystem::remove(tester_.tree.path() / "f");
    EXPECT_FALSE(ask("go").incomplete) << "no such file";
}

}  // namespace
}  // namespace toolkit::quorvis
