#include "toolkit/quorvis/formats/ElfFile.h"

#include <elf.h>
#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/ElfBuilder.h"
#include "tests/toolkit/quorvis/ElfFields.h"

namespace toolkit::quorvis {
namespace {

const std::string kGnu("GNU\0", 4);

TEST(ElfFile, ClassAndByteOrderMustBeKnown) {
    const std::tuple<char, char, const char*> cases[] = {
        {'\0', '\1', "damaged"}, {'\1', '\1', "opened"}, {'\2', '\1', "opened"}, {'\3', '\1', "damaged"},
        {'\2', '\0', "damaged"}, {'\2', '\2', "opened"}, {'\2', '\3', "damaged"}};
    for (const auto& [format, order, opened] : cases) {
        const Elf elf;
        elf.put(EI_CLASS, {format, order});
        elf.put(0x1C, std::string(36, '\0'));  // no tables in either class
        EXPECT_EQ(opened, elf.opened()) << int{format} << int{order};
    }
}

TEST(ElfFile, TheHeaderMustBeWhole) {
    const Elf wide;
    EXPECT_EQ("opened", wide.opened());
    wide.cut(63);
    EXPECT_EQ("damaged", wide.opened());
    const Elf narrow;
    narrow.put(EI_CLASS, "\x01");
    narrow.put(0x1C, std::string(36, '\0'));
    narrow.cut(52);
    EXPECT_EQ("opened", narrow.opened());
    narrow.cut(51);
    EXPECT_EQ("damaged", narrow.opened());
    narrow.cut(4);
    EXPECT_EQ("damaged", narrow.opened());
    narrow.cut(3);
    EXPECT_EQ("no ELF file", narrow.opened());
}

TEST(ElfFile, TheMachineIsNamedAsInUname) {
    const Elf elf;
    EXPECT_EQ("", elf.machine());
    elf.put(0x12, bytesOf(EM_AARCH64, 2));
    EXPECT_EQ("aarch64", elf.machine());
}

TEST(ElfFile, SegmentsHaveOneSizeAndAreWhole) {
    Elf elf;
    elf.segment(PT_LOAD, 0, 0, 0);
    EXPECT_EQ("opened", elf.opened());
    elf.segmentSize(57);
    EXPECT_EQ("damaged", elf.opened());
    elf.segmentCount(0);
    EXPECT_EQ("opened", elf.opened()) << "without segments their size does not matter";
    elf.segmentCount(1);
    elf.put(0x20, bytesOf(0, 8));
    EXPECT_EQ("opened", elf.opened()) << "nor without a table";
    elf.put(0x20, bytesOf(kSegments, 8));
    elf.segmentSize(56);
    elf.cut(kSegments + 55);
    EXPECT_EQ("damaged", elf.opened());
}

TEST(ElfFile, SectionsHaveOneSizeAndAreWhole) {
    Elf elf;
    elf.section(0, SHT_NULL, 0, 0);
    elf.section(1, SHT_STRTAB, kContents, 6);
    elf.namesSection(1);
    elf.put(kContents, std::string("\0name\0", 6));
    EXPECT_EQ(Section::Found, elf.read("name", 6));
    elf.sectionSize(65);
    EXPECT_EQ(Section::Damaged, elf.read("name", 6));
    elf.sectionSize(64);
    elf.namesSection(2);
    EXPECT_EQ(Section::Damaged, elf.read("name", 6)) << "there is no such section";
    elf.namesSection(SHN_UNDEF);
    EXPECT_EQ(Section::Missing, elf.read("name", 6)) << "no section has a name";
    elf.namesSection(1);
    elf.cut(kContents + 5);
    EXPECT_EQ(Section::Damaged, elf.read("name", 6)) << "the names are cut";
    elf.cut(kSections + 127);
    EXPECT_EQ(Section::Damaged, elf.read("name", 6)) << "the table is cut";
    elf.put(0x28, bytesOf(0, 8));
    EXPECT_EQ(Section::Missing, elf.read("name", 6)) << "there is no table";
    elf.sectionSize(65);
    EXPECT_EQ(Section::Missing, elf.read("name", 6)) << "without a table the size does not matter";
}

TEST(ElfFile, ATableWithoutSectionsHasNoNames) {
    Elf elf;
    elf.section(0, SHT_NULL, 0, 0);
    elf.sectionCount(0);
    EXPECT_EQ(Section::Missing, elf.read("name", 6));
    elf.namesSection(1);
    EXPECT_EQ(Section::Damaged, elf.read("name", 6));
}

TEST(ElfFile, NumbersThatAreTooLargeForTheHeaderAreInTheFirstSection) {
    Elf elf;
    elf.section(0, SHT_NULL, 0, 2, 1);
    elf.section(1, SHT_STRTAB, kContents, 6);
    elf.put(kContents, std::string("\0name\0", 6));
    elf.sectionCount(0);
    elf.namesSection(SHN_XINDEX);
    EXPECT_EQ(Section::Found, elf.read("name", 6));
    elf.put(kSections + 0x28, bytesOf(0x01000001, 4));
    EXPECT_EQ(Section::Damaged, elf.read("name", 6)) << "there is no such section";
    elf.put(kSections + 0x28, bytesOf(1, 4));
    constexpr std::uint64_t kMaxSections = std::uint64_t{1} << 18U;
    elf.cut(kSections + 64 * (kMaxSections + 1));
    elf.put(kSections + 0x20, bytesOf(kMaxSections, 8));
    EXPECT_EQ(Section::Found, elf.read("name", 6));
    elf.put(kSections + 0x20, bytesOf(kMaxSections + 1, 8));
    EXPECT_EQ(Section::Damaged, elf.read("name", 6));
}

TEST(ElfFile, NamesOfSectionsAreBounded) {
    constexpr std::uint64_t kMaxNames = std::uint64_t{16} << 20U;
    for (const std::uint64_t excess : {0U, 1U}) {
        Elf elf;
        elf.section(0, SHT_NULL, 0, 0);
        elf.section(1, SHT_STRTAB, kContents, kMaxNames + excess);
        elf.namesSection(1);
        elf.put(kContents, std::string("\0name\0", 6));
        elf.cut(kContents + kMaxNames + excess);
        EXPECT_EQ(excess == 0 ? Section::TooLarge : Section::Damaged, elf.read("name", 6));
    }
}

TEST(ElfFile, ASectionIsFoundByItsWholeName) {
    Elf elf;
    elf.section(0, SHT_NULL, 0, 0);
    elf.section(1, SHT_STRTAB, kContents, 15);
    elf.section(6, SHT_PROGBITS, kContents + 15, 3);
    elf.section(11, SHT_PROGBITS, kContents + 15, 3);
    elf.section(15, SHT_PROGBITS, kContents + 15, 3);
    elf.section(99, SHT_PROGBITS, kContents + 15, 3);
    elf.namesSection(1);
    elf.put(kContents, std::string("\0name\0text\0openabcd", 19));
    EXPECT_EQ(Section::Missing, elf.read("nam", 16));
    EXPECT_EQ(Section::Missing, elf.read("names", 16));
    EXPECT_EQ(Section::Missing, elf.read("open", 16)) << "its name does not end";
    std::string content;
    EXPECT_EQ(Section::Found, elf.read("text", 3, &content));
    EXPECT_EQ("abc", content);
    EXPECT_EQ(Section::TooLarge, elf.read("text", 2));
    elf.cut(kContents + 17);
    EXPECT_EQ(Section::Damaged, elf.read("text", 3));
}

TEST(ElfFile, AFileWithoutATableHasNoSections) {
    const Elf elf;
    EXPECT_TRUE(elf.hasSections());
    elf.put(0x28, bytesOf(1, 8));
    EXPECT_TRUE(elf.hasSections());
    elf.put(0x28, bytesOf(0, 8));
    EXPECT_FALSE(elf.hasSections());
}

TEST(ElfFile, WritableDataIsLoadedAndIsNoCode) {
    Elf elf;
    elf.segment(PT_LOAD, 1, 0, 10);
    elf.segment(PT_DYNAMIC, 2, 0, 20, 4, PF_R | PF_W);
    elf.segment(PT_LOAD, 3, 0, 30, 4, PF_R | PF_W | PF_X);
    elf.segment(PT_LOAD, 4, 0, 40, 4, PF_R | PF_X);
    EXPECT_EQ("none", elf.writableData());
    elf.segment(PT_LOAD, 5, 0, 50, 4, PF_R | PF_W);
    elf.segment(PT_LOAD, 6, 0, 60, 4, PF_R | PF_W);
    EXPECT_EQ("5 50", elf.writableData());
}

TEST(ElfFile, WithoutSectionHeadersTheSegmentsStandForTheSections) {
    Elf elf;
    elf.put(0x28, bytesOf(0, 8));  // no section headers
    EXPECT_EQ("none", elf.placeOf(".rodata"));
    elf.segment(PT_NOTE, 9, 0, 10);
    elf.segment(PT_LOAD, 1, 0, 10, 4, PF_R | PF_X);
    EXPECT_EQ("1 10", elf.placeOf(".rodata")) << "older linkers place constants beside the code";
    elf.segment(PT_LOAD, 2, 0, 20);
    EXPECT_EQ("2 20", elf.placeOf(".rodata"));
    elf.segment(PT_LOAD, 3, 0, 30, 4, PF_R | PF_X);
    EXPECT_EQ("2 20", elf.placeOf(".rodata"));
    elf.segment(PT_LOAD, 4, 0, 40);
    elf.segment(PT_LOAD, 5, 0, 1'000'000, 4, PF_R | PF_W);
    EXPECT_EQ("4 40", elf.placeOf(".rodata")) << "the first one has the headers only";
    for (const char* const section : {".data", ".data.rel.ro"}) EXPECT_EQ("5 1000000", elf.placeOf(section));
    EXPECT_EQ("5 65536", elf.placeOf(".go.buildinfo")) << "it is the start of the data";
    for (const char* const section : {".comment", ".text", ".bss"}) EXPECT_EQ("none", elf.placeOf(section));
}

TEST(ElfFile, TheTableOfTheDynamicLinkerEndsWithItsLastEntry) {
    const std::string texts("\0lib.so.1\0c.so\0m.so\0", 20);
    Elf elf;
    elf.put(0x3000, texts);
    elf.dynamic({{DT_STRTAB, 0x3000}, {DT_SONAME, 1}, {DT_NEEDED, 10}, {DT_NULL, 0}, {DT_NEEDED, 15}});
    EXPECT_EQ("lib.so.1 c.so", elf.dynamic()) << "nothing counts behind its end";
    Elf open;
    open.put(0x3000, texts);
    open.dynamic({{DT_STRTAB, 0x3000}, {DT_NEEDED, 10}, {DT_NEEDED, 15}});
    EXPECT_EQ(" c.so m.so", open.dynamic()) << "the end may be missing";
    open.firstSegmentHas(40);
    EXPECT_EQ(" c.so", open.dynamic()) << "half an entry is none";
}

TEST(ElfFile, TextsOfTheDynamicLinkerAreFoundWhereTheyAreLoaded) {
    Elf without;
    without.dynamic({{DT_STRTAB, 0x3000}});
    EXPECT_EQ("", without.dynamic());
    Elf noTexts;
    noTexts.dynamic({{DT_SONAME, 1}});
    EXPECT_EQ("damaged", noTexts.dynamic());

    Elf elf;
    elf.put(kContents, bytesOf(DT_STRTAB, 8) + bytesOf(0x7000, 8) + bytesOf(DT_SONAME, 8) + bytesOf(1, 8));
    elf.put(0x3000, std::string("\0a.so\0", 6));
    elf.segment(PT_DYNAMIC, kContents, 0, 32);
    elf.segment(PT_NOTE, 0x3000, 0x7000, 0x1000);
    EXPECT_EQ("damaged", elf.dynamic()) << "only what is loaded counts";
    elf.segment(PT_LOAD, 0x3000, 0x7001, 0x1000);
    EXPECT_EQ("damaged", elf.dynamic()) << "it begins behind the texts";
    elf.segment(PT_LOAD, 0x2000, 0x6000, 0x1000);
    EXPECT_EQ("damaged", elf.dynamic()) << "it ends before the texts";
    elf.segment(PT_LOAD, 0x2001, 0x6001, 0x1000);
    EXPECT_EQ("a.so", elf.dynamic()) << "the texts begin with its last byte";

    Elf first;
    first.put(kContents, bytesOf(DT_STRTAB, 8) + bytesOf(0x7000, 8) + bytesOf(DT_SONAME, 8) + bytesOf(1, 8));
    first.put(0x3000, std::string("\0a.so\0", 6));
    first.segment(PT_DYNAMIC, kContents, 0, 32);
    first.segment(PT_LOAD, 0x3000, 0x7000, 0x1000);
    EXPECT_EQ("a.so", first.dynamic()) << "the texts begin with its first byte";
}

TEST(ElfFile, TextsAndTablesOfTheDynamicLinkerAreBounded) {
    Elf elf;
    elf.dynamic({{DT_STRTAB, 0x3000}, {DT_SONAME, 1}});
    const std::string longest(4095, 'x');
    elf.put(0x3001, longest);
    EXPECT_EQ(longest, elf.dynamic());
    elf.put(0x3001 + 4095, "x");
    EXPECT_EQ("damaged", elf.dynamic());

    Elf large;
    large.put(0x3000, std::string("\0a\0", 3));
    large.dynamic({{DT_STRTAB, 0x3000}, {DT_SONAME, 1}, {DT_NULL, 0}});
    constexpr std::uint64_t kMaxTable = std::uint64_t{1} << 20U;
    large.firstSegmentHas(kMaxTable);
    EXPECT_EQ("a", large.dynamic());
    large.firstSegmentHas(kMaxTable + 1);
    EXPECT_EQ("damaged", large.dynamic());
    large.firstSegmentHas(32);
    large.put(kSegments + 0x08, bytesOf((std::uint64_t{1} << 21U) - 16, 8));
    EXPECT_EQ("damaged", large.dynamic()) << "the file ends in it";
}

TEST(ElfFile, AThousandNeededLibrariesAreRead) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> entries(1001, {DT_NEEDED, 1});
    entries.emplace_back(DT_STRTAB, 0x8000);
    Elf elf;
    elf.put(0x8000, std::string("\0a\0", 3));
    elf.dynamic(entries);
    EXPECT_EQ(2000U, elf.dynamic().size());
}

TEST(ElfFile, TheBuildIdIsFoundAmongOtherNotes) {
    for (const std::size_t alignment : {std::size_t{4}, std::size_t{8}}) {
        Elf elf;
        const std::string notes = note(NT_GNU_BUILD_ID, "Other", "abc", alignment) +
                                  note(NT_GNU_ABI_TAG, kGnu, "tag", alignment) +
                                  note(NT_GNU_BUILD_ID, kGnu, "\x12\xAB\xFF", alignment);
        elf.put(kContents, notes);
        elf.segment(PT_NOTE, kContents, 0, notes.size(), alignment);
        EXPECT_EQ("12abff", elf.buildId()) << alignment;
        Elf module;
        module.put(kContents, notes);
        module.section(0, SHT_NOTE, kContents, notes.size(), 0, alignment);
        EXPECT_EQ("12abff", module.buildId()) << alignment;
    }
}

constexpr std::uint64_t kPackageNote = 0xCAFE1A7E;
const std::string kFdo("FDO\0", 4);

TEST(ElfFile, ThePackageNoteIsFoundBesideTheBuildId) {
    const std::string text = R"({"type":"rpm","name":"tool"})";
    const std::string id = note(NT_GNU_BUILD_ID, kGnu, "\x12");
    const std::string packages = note(kPackageNote, kGnu, "other") + note(NT_GNU_BUILD_ID, kFdo, "other") +
                                 note(kPackageNote, kFdo, text + std::string(3, '\0'));
    Elf together;
    together.put(kContents, packages + id);
    together.segment(PT_NOTE, kContents, 0, packages.size() + id.size());
    EXPECT_EQ(text, together.packageNote());
    EXPECT_EQ("12", together.buildId());
    Elf apart;
    apart.put(kContents, id + packages);
    apart.segment(PT_NOTE, kContents, 0, id.size());
    apart.segment(PT_NOTE, kContents + id.size(), 0, packages.size());
    EXPECT_EQ(text, apart.packageNote());
    EXPECT_EQ("12", apart.buildId());
    apart.firstSegmentHas(0);
    EXPECT_EQ(text, apart.packageNote());
    Elf none;
    none.put(kContents, id);
    none.segment(PT_NOTE, kContents, 0, id.size());
    EXPECT_EQ("", none.packageNote());
}

// An entry of the section of symbol versions, whose name follows it.
std::string version(std::uint64_t flags, std::uint64_t name, std::uint64_t next) {
    return bytesOf(1, 2) + bytesOf(flags, 2) + bytesOf(0, 2) + bytesOf(1, 2) + bytesOf(0, 4) +
           bytesOf(20, 4) + bytesOf(next, 4) + bytesOf(name, 4) + bytesOf(0, 4);
}

constexpr std::uint64_t kVersions = 0x3000;
constexpr std::uint64_t kTexts = 0x4000;

TEST(ElfFile, SymbolVersionsAreNamedInTheirOrder) {
    Elf elf;
    elf.put(kTexts, std::string("\0lib.so.1\0LIB_1.0\0LIB_1.1\0", 26));
    elf.put(kVersions, version(VER_FLG_BASE, 1, 28) + version(0, 10, 28) + version(VER_FLG_WEAK, 18, 0));
    elf.dynamic({{DT_STRTAB, kTexts}, {DT_VERDEF, kVersions}, {DT_VERDEFNUM, 3}, {DT_NULL, 0}});
    EXPECT_EQ("LIB_1.0 LIB_1.1 ", elf.versions());
    EXPECT_EQ("", Elf().versions()) << "no dynamic section";
    Elf none;
    none.dynamic({{DT_STRTAB, kTexts}, {DT_NULL, 0}});
    EXPECT_EQ("", none.versions());
}

TEST(ElfFile, DamagedSymbolVersionsAreToldApart) {
    const auto versionsOf = [](const std::string& entries, std::uint64_t place, std::uint64_t count) {
        Elf elf;
        elf.put(kTexts, std::string("\0LIB_1.0\0", 9));
        elf.put(kVersions, entries);
        elf.dynamic({{DT_STRTAB, kTexts}, {DT_VERDEF, place}, {DT_VERDEFNUM, count}, {DT_NULL, 0}});
        return elf.versions();
    };
    const std::string good = version(0, 1, 0);
    EXPECT_EQ("LIB_1.0 ", versionsOf(good, kVersions, 1));
    EXPECT_EQ("damaged", versionsOf(good, std::uint64_t{1} << 40U, 1)) << "they are nowhere";
    EXPECT_EQ("damaged", versionsOf(good, (std::uint64_t{1} << 21U) - 10, 1)) << "the file ends in them";
    EXPECT_EQ("damaged", versionsOf(version(0, UINT32_MAX, 0), kVersions, 1)) << "the name is nowhere";
    EXPECT_EQ("damaged", versionsOf(good, kVersions, 1001)) << "there are too many";
    const std::string again = versionsOf(good, kVersions, 1000);
    EXPECT_EQ(std::size_t{8} * 1000, again.size())
        << "an entry that leads to itself is read as often as counted";
    EXPECT_EQ("damaged", versionsOf(version(0, 1, UINT32_MAX), kVersions, 2)) << "the next one is nowhere";
}

TEST(ElfFile, ADamagedNoteEndsTheSearch) {
    const std::string id = note(NT_GNU_BUILD_ID, kGnu, "\x12\xAB\xFF\x01");
    Elf elf;
    elf.put(kContents, id);
    elf.segment(PT_NOTE, kContents, 0, id.size());
    EXPECT_EQ("12abff01", elf.buildId()) << "it ends with its content";
    elf.firstSegmentHas(id.size() - 1);
    EXPECT_EQ("", elf.buildId()) << "its content is cut";
    elf.firstSegmentHas(15);
    EXPECT_EQ("", elf.buildId()) << "its name is cut";
    elf.firstSegmentHas(11);
    EXPECT_EQ("", elf.buildId()) << "its head is cut";
    elf.firstSegmentHas(id.size());
    elf.put(kContents + 4, bytesOf(0xFFFFFFF0, 4));
    EXPECT_EQ("", elf.buildId()) << "its size reaches beyond any file";
}

TEST(ElfFile, ANoteMayHaveNoContent) {
    const std::string notes = note(NT_GNU_BUILD_ID, "", "") + note(NT_GNU_BUILD_ID, kGnu, "\x01");
    Elf elf;
    elf.put(kContents, notes);
    elf.segment(PT_NOTE, kContents, 0, notes.size());
    EXPECT_EQ("01", elf.buildId());
}

TEST(ElfFile, NotesAreReadUpToABound) {
    constexpr std::uint64_t kMaxNotes = std::uint64_t{64} << 10U;
    const std::string id = note(NT_GNU_BUILD_ID, kGnu, "\x12\xAB\xFF\x01");
    for (const std::uint64_t excess : {0U, 1U}) {
        Elf elf;
        const std::uint64_t first = kMaxNotes - id.size() + 4 * excess;
        elf.put(kContents, bytesOf(0, 4) + bytesOf(first - 12, 4) + bytesOf(0, 4));
        elf.put(kContents + first, id);
        elf.segment(PT_NOTE, kContents, 0, first + id.size());
        EXPECT_EQ(excess == 0 ? "12abff01" : "", elf.buildId());
    }
}

TEST(ElfFile, NotesOfSegmentsAndSectionsAreReadInTurn) {
    const std::string other = note(NT_GNU_ABI_TAG, kGnu, "tag");
    const std::string id = note(NT_GNU_BUILD_ID, kGnu, "\x12");
    Elf segments;
    segments.put(kContents, id + other);
    segments.segment(PT_LOAD, kContents, 0, id.size());
    segments.segment(PT_NOTE, kContents + id.size(), 0, other.size());
    EXPECT_EQ("", segments.buildId()) << "a segment of another type has no notes";
    segments.segment(PT_NOTE, kContents, 0, id.size());
    EXPECT_EQ("12", segments.buildId());

    Elf sections;
    sections.put(kContents, id + other);
    sections.section(0, SHT_NULL, 0, 0);
    sections.section(0, SHT_PROGBITS, kContents, id.size());
    sections.section(0, SHT_NOTE, kContents + id.size(), other.size());
    EXPECT_EQ("", sections.buildId());
    sections.section(0, SHT_NOTE, kContents, id.size());
    EXPECT_EQ("12", sections.buildId());
    sections.sectionSize(1);
    EXPECT_EQ("", sections.buildId()) << "the sections are damaged";
    sections.sectionSize(64);
    sections.segment(PT_LOAD, 0, 0, 0);
    EXPECT_EQ("", sections.buildId()) << "where there are segments, sections are not read";
}

TEST(ElfFile, BothClassesAndByteOrdersTellTheSame) {
    for (const bool wide : {false, true}) {
        for (const bool littleEndian : {false, true}) {
            ElfBuilder builder;
            builder.wide = wide;
            builder.littleEndian = littleEndian;
            for (const bool segments : {false, true}) {
                builder.segments = segments;
                const Elf elf;
                elf.put(0, builder.build());
                elf.cut(builder.build().size());
                EXPECT_EQ("0123abcdef", elf.buildId());
                EXPECT_EQ(segments ? "libproduct.so.3 libc.so.6 libm.so.6" : "", elf.dynamic());
                EXPECT_EQ(segments, elf.writableData() != "none");
                std::string content;
                EXPECT_EQ(Section::Found, elf.read(".rodata", 48, &content));
                EXPECT_EQ(builder.readOnlyData, content);
                EXPECT_EQ(Section::Missing, elf.read(".bss", 100));
            }
        }
    }
}

}  // namespace
}  // namespace toolkit::quorvis
