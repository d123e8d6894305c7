// Scans as seen by the host.
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <thread>

#include "hw/ZAVHwCtx.h"
#include "kest/Text.h"
#include "tests/hw/Inventory.h"

namespace hwtest {
namespace {

using HWScanTest = InventoryTest;
using Texts = std::vector<std::string>;

// The files in the context's temporary directory.
std::size_t filesOf(const Inventory& inventory) {
    const std::filesystem::directory_iterator files(kest::narrow(inventory.context()->tmpDir->getBasePath()));
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

TEST(HWScan, RefusesANullContext) {
    EXPECT_EQ(ZAV_hw_run(nullptr), 3);
}

TEST_F(HWScanTest, FillsTheContextWithWhatTheScannerWrote) {
    scannerWrites("<QEL><Processor><Name>A</Name><Cores>8</Cores></Processor><Processor/></QEL>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(returnCode(), 0);
    EXPECT_EQ(instances(2), 2);
    EXPECT_EQ(fields(2, 0), (std::vector<std::wstring>{L"Name", L"Cores"}));
    EXPECT_EQ(value(2, 0, L"Cores"), L"8");
    EXPECT_EQ(instances(4), 0);
}

// The paths that a scan logs: the configuration file and the output file.
struct Paths {
    explicit Paths(const Messages& messages) {
        for (const zavtest::Message& message : messages) {
            const std::string before = "Requesting tmpFile [";
            if (message.text.find(before) != 0) continue;
            const std::string path =
                message.text.substr(before.size(), message.text.size() - before.size() - 1);
            (config.empty() ? config : output) = path;
        }
    }
    std::string config;
    std::string output;
};

TEST_F(HWScanTest, LogsEveryStepInOrder) {
    put("output.xml", "<QEL><Memory/><Memory/><Modem/></QEL>");
    put("lines", "one\r\n\ntwo");
    scannerIs("PrintLines");
    ASSERT_EQ(run(), 0);
    const Messages messages = takeMessages();
    const Paths paths(messages);
    EXPECT_EQ(messages, (Messages{
                            {2, 3, "TemporaryDir::getTmpFile()", "Requesting tmpFile [" + paths.config + "]"},
                            {2, 3, "ZAV_hw_run", "Generating config file: [" + paths.config + "]"},
                            {2, 3, "TemporaryDir::getTmpFile()", "Requesting tmpFile [" + paths.output + "]"},
                            {2, 3, "ZAV_hw_run",
                             "Executing ZAV [" + scanner().string() + " -c \"" + paths.config + "\" -o \"" +
                                 paths.output + "\"]"},
                            {2, 3, "ZAV_hw_run", "STDOUT data: [one]"},
                            {2, 3, "ZAV_hw_run", "STDOUT data: []"},
                            {2, 3, "ZAV_hw_run", "Exit code: 0 (OK)"},
                            {2, 3, "ZAV_hw_run", "Parsing XML file"},
                            {2, 3, "ZAV_hw_run", "Parse finish. 3 groups successfully retrieved"},
                        }));
}

TEST_F(HWScanTest, ItsFilesStayInTheContextsWorkspaceUntilTheContextIsFreed) {
    scannerWrites("<QEL/>");
    ASSERT_EQ(run(), 0);
    const Paths first(takeMessages());
    ASSERT_EQ(run(), 0);
    const Paths second(takeMessages());
    const std::string workspace = kest::narrow(context()->tmpDir->getBasePath());
    for (const std::string& path : {first.config, first.output, second.config, second.output}) {
        EXPECT_EQ(std::filesystem::path(path).parent_path(), workspace);
        EXPECT_TRUE(std::filesystem::exists(path)) << path;
    }
    EXPECT_EQ(std::filesystem::path(first.config).filename().string().find("config"), 0U);
    EXPECT_EQ(std::filesystem::path(first.output).filename().string().find("out_"), 0U);
    EXPECT_NE(first.config, second.config);
    EXPECT_NE(first.output, second.output);
    EXPECT_EQ(filesOf(*this), 4U);
    close();
    EXPECT_FALSE(std::filesystem::exists(workspace));
}

TEST_F(HWScanTest, TheScannerReadsTheEnabledGroups) {
    scannerIs("ShowConfiguration");
    disable(0);
    enable(4);
    enable(3);
    ASSERT_EQ(run(), 0);
    const std::wstring configuration = value(3, 0, L"Configuration");
    EXPECT_NE(configuration.find(L"\t\t<Hardware version=\"1.0\">\n"
                                 L"\t\t<Group Name=\"Memory\"/>\n"
                                 L"\t\t<Group Name=\"Operating System\"/>\n"
                                 L"\t\t</Hardware>\n"),
              std::wstring::npos)
        << configuration;
}

TEST_F(HWScanTest, TheScannerRunsWithoutEnabledGroups) {
    scannerIs("ShowConfiguration");
    disable(0);
    EXPECT_EQ(run(), 0);
    int count = 0;
    EXPECT_EQ(ZAV_hw_get_group_instances(context(), 3, &count), 108);
}

TEST_F(HWScanTest, ASecondScanReplacesTheFirst) {
    scannerWrites("<QEL><Memory><Size>1</Size></Memory><Memory/><Modem/></QEL>");
    ASSERT_EQ(run(), 0);
    scannerWrites("<QEL><Memory><Size>2</Size></Memory></QEL>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(instances(3), 1);
    EXPECT_EQ(instances(30), 0);
    EXPECT_EQ(value(3, 0, L"Size"), L"2");
}

TEST_F(HWScanTest, PointersStayValidUntilTheNextScan) {
    scannerWrites("<QEL><Memory><Size>1<!-- -->2</Size><Type>DDR</Type></Memory></QEL>");
    ASSERT_EQ(run(), 0);
    const wchar_t* size = nullptr;
    const wchar_t* type = nullptr;
    const wchar_t** names = nullptr;
    int count = 0;
    ASSERT_EQ(ZAV_hw_get_value(context(), 3, 0, L"Size", &size), 0);
    ASSERT_EQ(ZAV_hw_get_value(context(), 3, 0, L"Type", &type), 0);
    ASSERT_EQ(ZAV_hw_get_fields(context(), 3, 0, &names, &count), 0);
    enable(0);
    int ignored = 0;
    ZAV_hw_get_returncode(context(), &ignored);
    EXPECT_STREQ(size, L"12");
    EXPECT_STREQ(type, L"DDR");
    ASSERT_EQ(count, 2);
    EXPECT_STREQ(names[0], L"Size");
    EXPECT_STREQ(names[1], L"Type");
}

// The state after each kind of failure.

TEST_F(HWScanTest, AScannerThatCannotBeStartedIsALaunchFailure) {
    put("quorvah", "no program\n");  // not executable either
    EXPECT_EQ(run(), 103);
    EXPECT_EQ(returnCode(), -1);
    const Messages messages = takeMessages();
    EXPECT_EQ(messages.back(), (zavtest::Message{0, 3, "ZAV_hw_run", "Execution of command failed.."}));
    EXPECT_EQ(messages[messages.size() - 2],
              (zavtest::Message{0, 3, "ZAV_hw_run",
                                "Cannot start \"" + scanner().string() + "\": EACCES (permission denied)"}));
    EXPECT_EQ(messages[messages.size() - 3].text.find("Executing ZAV ["), 0U);

    std::filesystem::permissions(scanner(), std::filesystem::perms::owner_all);
    EXPECT_EQ(run(), 103);
    EXPECT_EQ(returnCode(), -1);

    std::filesystem::remove(scanner());
    EXPECT_EQ(run(), 103);
    EXPECT_EQ(returnCode(), -1);
}

TEST_F(HWScanTest, ALaunchFailureDiscardsTheResultsOfThePreviousScan) {
    scannerWrites("<QEL><Memory/></QEL>");
    ASSERT_EQ(run(), 0);
    std::filesystem::remove(scanner());
    EXPECT_EQ(run(), 103);
    EXPECT_EQ(returnCode(), -1);
    EXPECT_EQ(context()->tables.count(3), 0U);
}

class ExitStatusTest : public HWScanTest, public testing::WithParamInterface<int> {};

TEST_P(ExitStatusTest, OtherThanZeroIsAFailureThatIsKept) {
    scannerWrites("<QEL><Memory/></QEL>");
    ASSERT_EQ(run(), 0);
    put("status", std::to_string(GetParam()));
    scannerIs("FailAfterOutput");
    EXPECT_EQ(run(), 103);
    EXPECT_EQ(returnCode(), GetParam());
    // The output exists but is not read.
    EXPECT_EQ(
        takeMessages().back(),
        (zavtest::Message{0, 3, "ZAV_hw_run", "Exit code: " + std::to_string(GetParam()) + " (ERROR)"}));
    EXPECT_EQ(context()->tables.count(3), 0U);
}

INSTANTIATE_TEST_SUITE_P(Statuses, ExitStatusTest, testing::Values(1, 2, 3, 103, 126, 127, 128, 255));

class EndBySignalTest : public HWScanTest, public testing::WithParamInterface<int> {};

TEST_P(EndBySignalTest, Is128AndTheNumberOfTheSignal) {
    put("signal", std::to_string(GetParam()));
    put("output.xml", "<QEL><Memory/></QEL>");
    scannerIs("EndBySignal");
    EXPECT_EQ(run(), 103);
    EXPECT_EQ(returnCode(), 128 + GetParam());
    EXPECT_EQ(takeMessages().back().text, "Exit code: " + std::to_string(128 + GetParam()) + " (ERROR)");
    EXPECT_EQ(context()->tables.count(3), 0U);
}

INSTANTIATE_TEST_SUITE_P(Signals, EndBySignalTest, testing::Values(SIGHUP, SIGKILL, SIGPIPE, SIGTERM));

TEST_F(HWScanTest, AMissingOutputFileIsAnErrorOfTheOutput) {
    scannerIs("WriteNothing");
    EXPECT_EQ(run(), 104);
    EXPECT_EQ(returnCode(), 0);
    const Messages messages = takeMessages();
    EXPECT_EQ(messages[messages.size() - 2], (zavtest::Message{2, 3, "ZAV_hw_run", "Parsing XML file"}));
    EXPECT_EQ(messages.back().level, 0);
    EXPECT_EQ(messages.back().function, "XML_parser");
    EXPECT_TRUE(messages.back().text.starts_with("Error in line 0: /")) << messages.back();
    EXPECT_TRUE(messages.back().text.ends_with(": cannot be opened: ENOENT (no such file or directory)"))
        << messages.back();
    EXPECT_EQ(instances(3), 0);
}

TEST_F(HWScanTest, AnOutputFileThatIsTruncatedIsAnErrorOfTheOutputAndLeavesTheTablesEmpty) {
    put("output.xml", "<QEL>\n<Memory><Size>1</Size></Memory>\n<Memory><Size>2</Size></Memory></QEL>\n");
    scannerIs("WriteHalf");
    EXPECT_EQ(run(), 104);
    EXPECT_EQ(returnCode(), 0);
    const zavtest::Message last = takeMessages().back();
    EXPECT_EQ(last.level, 0);
    EXPECT_EQ(last.function, "XML_parser");
    EXPECT_EQ(last.text.find("Error in line "), 0U);
    EXPECT_EQ(instances(3), 0);
}

TEST_F(HWScanTest, TheInstancesBeforeAFaultAreServed) {
    scannerWrites(
        "<QEL><Memory><Size>1</Size></Memory><Memory/><Memory><Size><Unit/></Size></Memory><Memory/></QEL>");
    EXPECT_EQ(run(), 104);
    EXPECT_EQ(returnCode(), 0);
    EXPECT_EQ(
        takeMessages().back(),
        (zavtest::Message{0, 3, "parseHWField()", "Error: unrecognized format of value in field [Size]"}));
    EXPECT_EQ(instances(3), 2);
    EXPECT_EQ(value(3, 0, L"Size"), L"1");
    EXPECT_TRUE(fields(3, 1).empty());
}

TEST_F(HWScanTest, AnUnknownGroupIsNamed) {
    scannerWrites("<QEL><Memory/><Operating_System/><Memory/></QEL>");
    EXPECT_EQ(run(), 104);
    EXPECT_EQ(takeMessages().back(),
              (zavtest::Message{0, 3, "ZAV_hw_run", "Error: No such group [Operating_System]"}));
    EXPECT_EQ(instances(3), 1);
}

TEST_F(HWScanTest, AContextIsAsGoodAsNewAfterEveryFailure) {
    put("status", "3");
    put("signal", "15");
    for (const char* const program : {"WriteNothing", "FailAfterOutput", "EndBySignal", "WriteHalf"}) {
        put("output.xml", "<QEL><Modem/></QEL>");
        scannerIs(program);
        EXPECT_NE(run(), 0) << program;
        scannerWrites("<QEL><Memory/></QEL>");
        ASSERT_EQ(run(), 0) << program;
        EXPECT_EQ(instances(3), 1);
        EXPECT_EQ(instances(30), 0);
    }
}

// The scanner's standard output.

TEST_F(HWScanTest, EachLineIsLoggedAsSoonAsItsLineFeedArrives) {
    put("output.xml", "<QEL/>");
    const std::string pipe = path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    scannerIs("PrintThenWait");

    // The scanner continues after its line has been received.
    struct Listener {
        static void callback(int, int, void* userData, const char*, const char* message) {
            auto& self = *static_cast<Listener*>(userData);
            self.heard.emplace_back(message);
            if (self.heard.back() == "STDOUT data: [first]") std::ofstream(self.pipe) << "go on";
        }
        std::string pipe;
        Texts heard;
    } listener{pipe, {}};
    ZAVHwCtx* other = nullptr;
    ASSERT_EQ(ZAV_hw_init(handle(), Listener::callback, &listener, &other), 0);
    EXPECT_EQ(ZAV_hw_run(other), 0);
    EXPECT_EQ(std::count(listener.heard.begin(), listener.heard.end(), "STDOUT data: [second]"), 1);
    EXPECT_EQ(ZAV_hw_free(other), 0);
}

struct RefusedCase {
    const char* name;
    std::string output;
    std::string reason;
    std::string known;  // the message after it that hosts match
};

class RefusedTest : public HWScanTest, public testing::WithParamInterface<RefusedCase> {};

TEST_P(RefusedTest, IsReportedWithFileLineAndReason) {
    scannerWrites(GetParam().output);
    ASSERT_EQ(run(), 104);
    Messages told = takeMessages();
    std::erase_if(told, [](const zavtest::Message& each) { return each.level != 0; });
    ASSERT_EQ(told.size(), GetParam().known.empty() ? 1U : 2U);
    EXPECT_EQ(told[0].function, "ZAV_hw_run");
    EXPECT_TRUE(told[0].text.starts_with("[" + temp().string())) << told[0];
    EXPECT_TRUE(told[0].text.ends_with("], " + GetParam().reason)) << told[0];
    if (!GetParam().known.empty()) {
        EXPECT_EQ(told[1].text, GetParam().known);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Outputs, RefusedTest,
    testing::Values(
        RefusedCase{"TextForAField", "<QEL>\n<Memory/>\n<Processor> </Processor>\n</QEL>",
                    "line 3: a field is expected, not the text \" \" in instance 2, \"Processor\"", ""},
        RefusedCase{"TextBehindAField", "<QEL>\n<Memory>\n<Size>1</Size>\n\nx</Memory>\n</QEL>",
                    "line 5: a field is expected, not the text \"\\x0A\\x0Ax\" in instance 1, \"Memory\"",
                    ""},
        RefusedCase{"TextForAnInstance", "<QEL><Memory/>free</QEL>",
                    "line 1: an instance of a group is expected, not the text \"free\" behind instance 1",
                    ""},
        RefusedCase{"UnknownGroup", "<QEL><Memory/>\n<Memory><Size>1</Size></Memory>\n\n<Nonsense/></QEL>",
                    "line 4: no group has the name \"Nonsense\" in instance 3, \"Nonsense\"",
                    "Error: No such group [Nonsense]"},
        RefusedCase{"ElementInAField", "<QEL>\n<Memory>\n<A>1</A>\n<B>2\n<Unit/></B></Memory></QEL>",
                    "line 5: text is expected in the field \"B\", not the element \"Unit\" in instance 1, "
                    "\"Memory\"",
                    "Error: unrecognized format of value in field [B]"},
        RefusedCase{
            "NameThatTheLocaleDrops", "<QEL><M\xC3\xB6\x62\x65l/></QEL>",
            "line 1: no group has the name \"M\\xC3\\xB6\x62\x65l\" in instance 1, \"M\\xC3\\xB6\x62\x65l\"",
            ""},
        RefusedCase{
            "FieldWithANameThatTheLocaleDrops", "<QEL><Memory><\xC3\xB6><b/></\xC3\xB6></Memory></QEL>",
            "line 1: text is expected in the field \"\\xC3\\xB6\", not the element \"b\" in instance 1, "
            "\"Memory\"",
            ""},
        RefusedCase{"LongText", "<QEL>" + std::string(300, 'x') + "</QEL>",
                    "line 1: an instance of a group is expected, not the text \"" + std::string(200, 'x') +
                        "...\" behind instance 0",
                    ""}),
    [](const auto& test) { return std::string(test.param.name); });

struct LinesCase {
    const char* name;
    std::string printed;
    Texts lines;
};

class LinesTest : public HWScanTest, public testing::WithParamInterface<LinesCase> {};

TEST_P(LinesTest, AreLoggedOneByOne) {
    put("output.xml", "<QEL/>");
    put("lines", GetParam().printed);
    scannerIs("PrintLines");
    ASSERT_EQ(run(), 0);
    Texts lines;
    for (const std::string& text : takeTextsOf("ZAV_hw_run")) {
        const std::string before = "STDOUT data: [";
        if (text.find(before) == 0)
            lines.push_back(text.substr(before.size(), text.size() - before.size() - 1));
    }
    EXPECT_EQ(lines, GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(Outputs, LinesTest,
                         testing::Values(LinesCase{"Nothing", "", {}},
                                         LinesCase{"CarriageReturnsAreDropped", "a\r\nb\n", {"a", "b"}},
                                         LinesCase{"WithoutALineFeedAtTheEnd", "a\nb", {"a"}},
                                         LinesCase{"EmptyLines", "\n\n", {"", ""}},
                                         LinesCase{"CarriageReturnsAnywhere", "\ra\rb\r\r\n", {"ab"}},
                                         LinesCase{"LongerThanAnyBuffer",
                                                   std::string(300'000, 'x') + "\ny\n",
                                                   {std::string(300'000, 'x'), "y"}},
                                         LinesCase{"PercentSigns", "100%s %n %d\n", {"100%s %n %d"}},
                                         LinesCase{"BytesThatAreNoText", "\xFF\xFE\x01\n", {"\xFF\xFE\x01"}},
                                         LinesCase{"ManyLines",
                                                   [] {
                                                       std::string all;
                                                       for (int i = 0; i < 2000; ++i) all += "l\n";
                                                       return all;
                                                   }(),
                                                   Texts(2000, "l")}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(HWScanTest, ALineIsLoggedUpToItsFirstNul) {
    put("output.xml", "<QEL/>");
    put("lines", std::string("a\0b\nc\n", 6));
    scannerIs("PrintLines");
    ASSERT_EQ(run(), 0);
    const Texts texts = takeTextsOf("ZAV_hw_run");
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "STDOUT data: [a]"), 1);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "STDOUT data: [c]"), 1);
}

// The scanner ends after its output, so waiting only for the end of the output is not enough.
TEST_F(HWScanTest, AScannerThatClosesItsOutputIsWaitedFor) {
    put("output.xml", "<QEL><Memory/></QEL>");
    const std::string pipe = path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    scannerIs("CloseOutput");
    std::thread opener([&pipe] { std::ofstream(pipe) << "go on"; });
    EXPECT_EQ(run(), 0);
    opener.join();
    EXPECT_EQ(instances(3), 1);
}

}  // namespace
}  // namespace hwtest
