// Messages about files that the reader refuses.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

#include "kest/Text.h"
#include "tessa/DocumentFile.h"
#include "tessa/ReadError.h"
#include "tests/support/Allocations.h"
#include "tests/support/Descriptors.h"
#include "tests/support/Faults.h"
#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

namespace fs = std::filesystem;

const Diagnostic kDoctype = {Kind::kWarning, L"document type declaration: nothing external is loaded", 1};

std::vector<Diagnostic> critical(const std::wstring& message, int line) {
    return {{Kind::kCritical, message, line}};
}

TEST(NodeReaderFaults, EachKindOfMalformedTextIsReportedWithItsLine) {
    const wchar_t* const invalid = L"not well-formed (invalid token)";
    const wchar_t* const noElement = L"no element found";
    const wchar_t* const junk = L"junk after document element";
    const wchar_t* const reference = L"reference to invalid character number";
    const wchar_t* const declaration = L"XML or text declaration not at start of entity";
    const struct {
        const char* xml;
        const wchar_t* message;
        int line;
    } cases[] = {
        {"", noElement, 1},
        {" ", noElement, 1},
        {"\n\n", noElement, 3},
        {"\xEF\xBB\xBF", noElement, 1},
        {"<!-- x -->\n", noElement, 2},
        {"<a>\n<b>\n", L"no element found, the end of \"b\" is expected", 3},
        {"<a>\n</a", L"unclosed token", 2},
        {"<a\nx='1", L"unclosed token", 1},
        {"<a>\n<!-- x", L"unclosed token", 2},
        {"<a>\n<?x", L"unclosed token", 2},
        {"<a>\n\n<![CDATA[x", L"unclosed CDATA section", 3},
        {"<a>\n<b>\n</a>", L"mismatched tag, the end of \"b\" is expected", 3},
        {"<a>\n</A>", L"mismatched tag, the end of \"a\" is expected", 2},
        {"<\xC3\xA4></a>", L"mismatched tag, the end of \"\\xC3\\xA4\" is expected", 1},
        {"<a/>\n<b/>", junk, 2},
        {"<a/>\nx", junk, 2},
        {"<a/>\n&lt;", invalid, 2},
        {"x", L"syntax error", 1},
        {"\n\nplain text", L"syntax error", 3},
        {"</a>", invalid, 1},
        {"<1/>", invalid, 1},
        {"< a/>", invalid, 1},
        {"<a>\n<\n/a>", invalid, 2},
        {"<a>\nx & y</a>", invalid, 2},
        {"<a>\nx &y</a>", invalid, 2},
        {"<a>\n]]></a>", invalid, 2},
        {"<a>\n\x01</a>", invalid, 2},
        {"<a>\n<!-- -- --></a>", invalid, 2},
        {"<a x=1/>", invalid, 1},
        {"<a x/>", invalid, 1},
        {"<a x='1'y='2'/>", invalid, 1},
        {"<a x='<'/>", invalid, 1},
        {"<a\nx='1' x='2'/>", L"duplicate attribute", 2},
        {"<a>\n&nbsp;</a>", L"undefined entity", 2},
        {"<a x='&y;'/>", L"undefined entity", 1},
        {"<a>\n&#0;</a>", reference, 2},
        {"<a>&#xD800;</a>", reference, 1},
        {"<a>&#x110000;</a>", reference, 1},
        {"<a>&#xFFFF;</a>", reference, 1},
        {"<a>\n<?xml version='1.0'?></a>", declaration, 2},
        {"\n<?xml version='1.0'?><a/>", declaration, 2},
        {"<?xml version='1.0' encoding='UTF-8' nonsense='x'?><a/>", L"XML declaration not well-formed", 1},
        {"<?xml?><a/>", L"XML declaration not well-formed", 1},
        {"<a><?XML x?></a>", invalid, 1},
    };
    for (const auto& each : cases) {
        const Document document = readText(each.xml);
        EXPECT_EQ(document.status, 1) << each.xml;
        EXPECT_EQ(document.diagnostics, critical(each.message, each.line)) << each.xml;
    }
}

TEST(NodeReaderFaults, ZeroByteIsRefused) {
    const Document document = readText(std::string("<a>\n\0</a>", 9));
    EXPECT_EQ(document.diagnostics, critical(L"not well-formed (invalid token)", 2));
}

TEST(NodeReaderFaults, LinesAreCountedOverAllBlocks) {
    const std::string lines(300000, '\n');
    EXPECT_EQ(readText("<a>" + lines + "</b>").diagnostics,
              critical(L"mismatched tag, the end of \"a\" is expected", 300001));
}

TEST(NodeReaderFaults, DoctypeIsAWarningWithItsLine) {
    const struct {
        const char* xml;
        const wchar_t* tree;
        int line;
        std::wstring leftOut = {};
    } cases[] = {
        {"<!DOCTYPE a><a/>", L"a", 1},
        {"<?xml version='1.0'?>\n\n<!DOCTYPE a SYSTEM 'file:///nowhere.dtd'>\n<a>x</a>", L"a(\"x\")", 3,
         L"file:///nowhere.dtd"},
        {"<!DOCTYPE a PUBLIC '-//x//y' 'nowhere.dtd' [<!ELEMENT a ANY>]><a/>", L"a", 1, L"nowhere.dtd"},
        {"<!DOCTYPE a [<!ENTITY e 'text<b/>'>]>\n<a x='&f;'>&e;</a>", L"", 1},
        {"<!DOCTYPE a [<!ENTITY e 'text<b/>'><!ENTITY f 'y'>]>\n<a x='&f;'>&e;</a>", L"a[x='y'](\"text\" b)",
         1},
        {"<!DOCTYPE b><a/>", L"a", 1},
    };
    for (const auto& each : cases) {
        const Document document = readText(each.xml);
        const bool good = *each.tree != L'\0';
        const std::wstring leftOut =
            each.leftOut.empty() ? L"" : L", so \"" + each.leftOut + L"\" is left out";
        ASSERT_EQ(document.diagnostics.size(), good ? 1U : 2U) << each.xml;
        EXPECT_EQ(document.diagnostics.front(),
                  (Diagnostic{Kind::kWarning, kDoctype.message + leftOut, each.line}));
        EXPECT_EQ(shown(document.root.get()), each.tree);
    }
}

TEST(NodeReaderFaults, OnlyVersionOneZeroIsRead) {
    for (const std::string version : {"2.0", "1.1", "1.5", "1.", "10", "1.00"}) {
        const std::wstring wide(version.begin(), version.end());
        for (const std::string encoding : {"", " encoding='UTF-8'", " encoding='windows-1255'"}) {
            EXPECT_EQ(readText("<?xml version='" + version + "'" + encoding + "?>\n<a/>").diagnostics,
                      critical(L"XML version \"" + wide + L"\" is not supported, only \"1.0\"", 1));
        }
    }
    EXPECT_EQ(readText("<?xml version='1.0'?><a/>").status, 0);
}

TEST(NodeReaderFaults, DoctypeIsRefusedOnDemand) {
    const Document document = readText("<?xml version='1.0'?>\n<!DOCTYPE a><a/>", {.refuseDoctype = true});
    EXPECT_EQ(document.diagnostics, critical(L"document type declaration refused", 2));
    EXPECT_EQ(readText("<a/>", {.refuseDoctype = true}).status, 0);
}

TEST(NodeReaderFaults, SecondDoctypeIsMalformed) {
    const Document document = readText("<!DOCTYPE a>\n<!DOCTYPE a><a/>");
    EXPECT_EQ(document.diagnostics,
              (std::vector<Diagnostic>{kDoctype, {Kind::kCritical, L"syntax error", 2}}));
}

TEST(NodeReaderFaults, GoodFileTruncatedAnywhereIsRefused) {
    const std::string xml =
        "<?xml version='1.0' encoding='ISO-8859-1'?>\n<!DOCTYPE a [<!ENTITY e 'x'>]>\n"
        "<a x='1' y=\"&lt;&#65;\">\n <b>\xE4 &amp; &e;</b><!-- c --><?p q?><![CDATA[<d>]]><c/>\n</a>";
    ASSERT_EQ(readText(xml).status, 0);
    for (std::size_t length = 0; length < xml.size(); ++length) {
        for (const int blockSize : {0, 1}) {
            const Document document = readText(xml.substr(0, length), {.blockSize = blockSize});
            EXPECT_EQ(document.status, 1) << length;
            ASSERT_FALSE(document.diagnostics.empty()) << length;
            EXPECT_EQ(document.diagnostics.back().kind, Kind::kCritical);
        }
    }
}

TEST(NodeReaderFaults, RefusedFilesLeaveNothingAllocated) {
    for (const char* const xml : {"", "<a", "<a><b x='1'>text<c></d>", "<a/><b/>", "<!DOCTYPE a [<!ENTITY"}) {
        const zavtest::ScratchDir directory;
        const fs::path file = directory.write("text.xml", xml);
        const long blocks = zavtest::liveBlocks();
        const std::size_t descriptors = zavtest::openDescriptors();
        EXPECT_EQ(readFile(file).status, 1);
        EXPECT_EQ(zavtest::liveBlocks(), blocks);
        EXPECT_EQ(zavtest::openDescriptors(), descriptors);
    }
}

TEST(NodeReaderFaults, FileThatCannotBeOpenedIsReported) {
    const zavtest::ScratchDir directory;
    const fs::path file = directory.write("file", "<a/>");
    const fs::path loop = directory.path() / "loop";
    fs::create_symlink(loop, loop);
    EXPECT_EQ(readFile(directory.path() / "missing").diagnostics,
              critical(L"cannot be opened: ENOENT (no such file or directory)", 0));
    EXPECT_EQ(readFile("").diagnostics, critical(L"cannot be opened: ENOENT (no such file or directory)", 0));
    EXPECT_EQ(readFile(file / "below").diagnostics,
              critical(L"cannot be opened: ENOTDIR (not a directory)", 0));
    EXPECT_EQ(readFile(loop).diagnostics,
              critical(L"cannot be opened: ELOOP (too many levels of symbolic links)", 0));
    EXPECT_EQ(readFile(directory.path() / std::string(300, 'n')).diagnostics,
              critical(L"cannot be opened: ENAMETOOLONG (file name too long)", 0));
    const zavtest::Fault denied("open", EACCES);
    EXPECT_EQ(readFile(file).diagnostics, critical(L"cannot be opened: EACCES (permission denied)", 0));
}

TEST(NodeReaderFaults, OnlyRegularFilesAreAccepted) {
    const zavtest::ScratchDir directory;
    const fs::path pipe = directory.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
    const fs::path socket = directory.path() / "socket";
    ASSERT_EQ(mknod(socket.c_str(), S_IFSOCK | S_IRUSR | S_IWUSR, 0), 0);
    const std::wstring expected = L"a regular file is expected, but this is ";
    EXPECT_EQ(readFile(directory.path()).diagnostics, critical(expected + L"a directory", 0));
    EXPECT_EQ(readFile(pipe).diagnostics, critical(expected + L"a pipe", 0));
    EXPECT_EQ(readFile(socket).diagnostics, critical(expected + L"a socket", 0));
    EXPECT_EQ(readFile("/dev/zero").diagnostics, critical(expected + L"a device", 0));
    for (const fs::path& each : {pipe, socket, fs::path("/dev/zero"), directory.path()}) {
        const fs::path link = directory.path() / "link";
        fs::create_symlink(each, link);
        EXPECT_EQ(readFile(link).status, 1) << each;
        fs::remove(link);
    }
}

TEST(NodeReaderFaults, LinksAreFollowed) {
    const zavtest::ScratchDir directory;
    const fs::path link = directory.path() / "link";
    fs::create_symlink(directory.write("text.xml", "<a/>"), link);
    EXPECT_EQ(shown(readFile(link).root.get()), L"a");
}

TEST(NodeReaderFaults, HugeFileIsRefusedBeforeItIsRead) {
    const zavtest::ScratchDir directory;
    const fs::path file = directory.write("text.xml", "<a/>");
    ASSERT_EQ(truncate(file.c_str(), off_t{1} << 40), 0);
    const std::size_t before = zavtest::bytesRead();
    EXPECT_EQ(readFile(file).diagnostics, critical(L"larger than 1073741824 bytes", 0));
    EXPECT_EQ(zavtest::bytesRead(), before);
}

TEST(NodeReaderFaults, FileThatGrowsWhileItIsReadIsBounded) {
    const zavtest::ScratchDir directory;
    const fs::path path = directory.write("text.xml", "123");
    DocumentFile file(path.c_str(), 10);
    char buffer[4];
    EXPECT_EQ(file.read(buffer, 4), 3);
    std::ofstream(path, std::ios::app) << "4567";
    EXPECT_EQ(file.read(buffer, 4), 4);
    std::ofstream(path, std::ios::app) << "89abcdef";
    EXPECT_THROW(file.read(buffer, 4), Fault);
    EXPECT_THROW(DocumentFile(path.c_str(), 10), Fault);
}

TEST(NodeReaderFaults, FileThatShrinksWhileItIsReadEndsThere) {
    const zavtest::ScratchDir directory;
    const fs::path path = directory.write("text.xml", "123456");
    DocumentFile file(path.c_str());
    char buffer[4];
    EXPECT_EQ(file.read(buffer, 4), 4);
    ASSERT_EQ(truncate(path.c_str(), 2), 0);
    EXPECT_EQ(file.read(buffer, 4), 0);
}

// A message with a character that the locale cannot convert would be dropped, so all messages are ASCII.
TEST(NodeReaderFaults, MessagesArePrintableAscii) {
    const zavtest::ScratchDir directory;
    const char* const documents[] = {
        "<\xC3\xA4></b>",
        "<\xC3\xA4>",
        ("<!DOCTYPE a SYSTEM '\xC3\xA4' [<!ENTITY \xC3\xB6 SYSTEM 'x'>]><a "
         "x='&\xC3\xBC;'>&\xC3\xB6;&\xC3\xA4;</a>"),
        "<?xml version='\xC3\xA4'?><a/>",
        "<?xml version='1.0' encoding='\xC3\xA4'?><a/>",
    };
    for (const char* const document : documents) {
        Sink sink;
        NodeReader reader(sink);
        reader.process(kest::String(kest::widen(directory.write("text.xml", document).string())), 0);
        ASSERT_FALSE(sink.diagnostics.empty()) << document;
        for (const Diagnostic& each : sink.diagnostics) {
            EXPECT_TRUE(std::all_of(each.message.begin(), each.message.end(), [](wchar_t character) {
                return character >= L' ' && character <= L'~';
            })) << each;
        }
    }
}

TEST(NodeReaderFaults, PathIsNarrowedToItsLowBytes) {
    const zavtest::ScratchDir directory;
    directory.write("t\xE4xt", "<a/>");
    Sink sink;
    NodeReader reader(sink);
    reader.process(kest::String(kest::widen(directory.path().string()) + L"/t\x1E4xt"), 0);
    EXPECT_EQ(reader.status, 0);
}

TEST(NodeReaderFaults, ReadErrorsAreReportedAndInterruptedReadsRepeated) {
    const zavtest::ScratchDir directory;
    const fs::path file = directory.write("text.xml", "<a>text<b/></a>");
    const std::size_t descriptors = zavtest::openDescriptors();
    int reads = 0;
    for (bool failed = true; failed; ++reads) {
        const zavtest::Fault interrupted("read", EINTR, reads + 1);
        const Document document = readFile(file, {.blockSize = 4});
        failed = interrupted.happened();
        EXPECT_EQ(shown(document.root.get()), L"a(\"text\" b)");
    }
    EXPECT_EQ(reads, 6) << "five reads of a file of 15 bytes, and a round without an interruption";
    for (int nth = 1; nth < reads; ++nth) {
        const zavtest::Fault broken("read", EIO, nth);
        const Document document = readFile(file, {.blockSize = 4});
        EXPECT_EQ(document.status, 1);
        EXPECT_EQ(document.diagnostics, critical(L"cannot be read: EIO (input/output error)", 0));
        EXPECT_TRUE(broken.happened());
    }
    const zavtest::Fault interrupted("open", EINTR);
    EXPECT_EQ(readFile(file).status, 0);
    EXPECT_TRUE(interrupted.happened());
    EXPECT_EQ(zavtest::openDescriptors(), descriptors);
}

TEST(NodeReaderFaults, ReaderCanBeUsedAgain) {
    const zavtest::ScratchDir directory;
    const auto path = [&](const char* name, const char* xml) {
        return kest::String(kest::widen(directory.write(name, xml).string()));
    };
    Sink sink;
    NodeReader reader(sink);
    EXPECT_EQ(reader.process(path("bad", "<a"), 0), 1);
    EXPECT_EQ(reader.process(path("good", "<b/>"), 0), 0);
    EXPECT_EQ(reader.status, 0);
    EXPECT_EQ(shown(sink.root.get()), L"b");
    EXPECT_EQ(reader.process(path("bad", "<a"), 0), 1);
    EXPECT_EQ(reader.status, 1);
    EXPECT_EQ(sink.trees, 1);
}

struct TreeSink : NodeSink {
    int onNodeTree(Node* node) override {
        root.reset(node);
        return 0;
    }
    std::unique_ptr<Node> root;
};

TEST(NodeReaderFaults, MessagesMayBeIgnoredByTheSink) {
    const zavtest::ScratchDir directory;
    TreeSink sink;
    NodeReader reader(sink);
    EXPECT_EQ(sink.onWarning(kest::String(L"x"), 1), 0);
    EXPECT_EQ(sink.onError(kest::String(L"x"), 1), 0);
    EXPECT_EQ(sink.onCriticalError(kest::String(L"x"), 1), 0);
    reader.process(kest::String(kest::widen(directory.write("bad", "<!DOCTYPE a><a").string())), 0);
    EXPECT_EQ(reader.status, 1);
    reader.process(kest::String(kest::widen(directory.write("good", "<!DOCTYPE a><a/>").string())), 0);
    EXPECT_EQ(shown(sink.root.get()), L"a");
}

struct ThrowingSink : TreeSink {
    int onWarning(const kest::String& /*message*/, int /*line*/) override { throw 7; }
};

TEST(NodeReaderFaults, ExceptionOfTheSinkPassesThrough) {
    const zavtest::ScratchDir directory;
    const kest::String path(kest::widen(directory.write("text.xml", "<!DOCTYPE a><a/>").string()));
    const std::size_t descriptors = zavtest::openDescriptors();
    const long blocks = zavtest::liveBlocks();
    ThrowingSink sink;
    NodeReader reader(sink);
    EXPECT_THROW(reader.process(path, 0), int);
    EXPECT_EQ(reader.status, 1);
    EXPECT_EQ(sink.root, nullptr);
    EXPECT_EQ(zavtest::openDescriptors(), descriptors);
    EXPECT_EQ(zavtest::liveBlocks(), blocks);
}

TEST(NodeReaderFaults, EveryFailedAllocationThrowsAndLeavesNothing) {
    const zavtest::ScratchDir directory;
    std::string xml = "<?xml version='1.0' encoding='windows-1252'?><!DOCTYPE a [<!ENTITY e 'x'>]><a>";
    for (int i = 0; i < 400; ++i) {
        const std::string number = std::to_string(i);
        xml.append("<e").append(number).append(" x='&lt;'>").append(200, 't');
        xml.append("<f/>&e;</e").append(number).append(">");
    }
    const kest::String path(kest::widen(directory.write("text.xml", xml + "</a>").string()));
    const std::size_t descriptors = zavtest::openDescriptors();
    int failures = 0;
    for (bool failed = true; failed; ++failures) {
        const long blocks = zavtest::liveBlocks();
        bool thrown = false;
        {
            TreeSink sink;
            NodeReader reader(sink);
            const zavtest::FailingAllocation failing(failures + 1);
            try {
                reader.process(path, 0);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            failed = failing.happened();
            EXPECT_EQ(reader.status, thrown ? 1 : 0);
        }
        EXPECT_EQ(thrown, failed) << failures;
        EXPECT_EQ(zavtest::liveBlocks(), blocks) << failures;
    }
    EXPECT_GT(failures, 20);
    EXPECT_EQ(zavtest::openDescriptors(), descriptors);
}

}  // namespace
}  // namespace tessa::test
