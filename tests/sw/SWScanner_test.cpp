// How the scanner is started and how its exit status is handled.
#include "sw/SWScanner.h"

#include <algorithm>
#include <csignal>

#include "kest/Text.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/sw/Evaluation.h"

namespace swtest {
namespace {

constexpr const char* kFunction = "SW_ExecuteScanner()";

class SWScannerTest : public EvaluationTest {
  protected:
    int execute() {
        warnings_.clear();
        output_.clear();
        return zav::SW_ExecuteScanner(context(), L"/w/cfg_1.xml", L"/w/sig_1.xml", warnings_, output_);
    }

    std::string warnings() const { return kest::narrow(warnings_); }
    std::string output() const { return kest::narrow(output_); }
    // The command line with the file names of the last execution.
    std::string command() const {
        return path().string() + "/quorvis -c \"/w/cfg_1.xml\" -o \"" + output() + "\" -e \"" + warnings() +
               "\" -i \"/w/sig_1.xml\"";
    }
    // The expected messages of an execution; `rest` follows the command.
    Messages messagesWith(const Messages& rest) const {
        Messages all = {
            {2, 4, "TemporaryDir::getTmpFile()", "Requesting tmpFile [" + output() + "]"},
            {2, 4, kFunction, "Output File: " + output()},
            {2, 4, "TemporaryDir::getTmpFile()", "Requesting tmpFile [" + warnings() + "]"},
            {2, 4, kFunction, "Warning file: " + warnings()},
            {2, 4, kFunction, "Executing command: [" + command() + "]"},
        };
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    }

    std::wstring warnings_;
    std::wstring output_;
};

TEST_F(SWScannerTest, LogsItsFilesCommandLinesAndExitStatus) {
    scannerIs("CopyFiles");
    put("lines", "one\r\n\ntw\ro\nunterminated");
    EXPECT_EQ(execute(), 0);
    EXPECT_EQ(takeMessages(), messagesWith({{2, 4, kFunction, "STDOUT data: [one]"},
                                            {2, 4, kFunction, "STDOUT data: []"},
                                            {2, 4, kFunction, "STDOUT data: [two]"},
                                            {2, 4, kFunction, "Exit code: 0 (OK)"}}));
    EXPECT_EQ(returnCode(), 0);
}

TEST_F(SWScannerTest, TheScannerGetsTheFourNames) {
    scannerIs("ShowArguments");
    EXPECT_EQ(execute(), 0);
    EXPECT_EQ(takePrinted(), (Texts{scanner(), "-c", "/w/cfg_1.xml", "-o", output(), "-e", warnings(), "-i",
                                    "/w/sig_1.xml"}));
}

TEST_F(SWScannerTest, ItsResultFilesAreNamedByTheWorkspace) {
    execute();
    const std::filesystem::path workspace = temp();
    for (const auto& [path, prefix] : {std::pair(output(), "out_"), std::pair(warnings(), "warning_")}) {
        const std::string name = std::filesystem::path(path).filename();
        EXPECT_TRUE(path.starts_with(workspace.string() + "/")) << path;
        EXPECT_TRUE(name.starts_with(prefix + std::to_string(getpid()))) << name;
        EXPECT_NE(name.find(".xml"), std::string::npos) << name;
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

class SWExitCodeTest : public SWScannerTest, public testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(SWExitCodeTest, IsKeptAndTurnedIntoACode) {
    const auto [status, code] = GetParam();
    scannerIs("CopyFiles");
    put("status", std::to_string(status));
    EXPECT_EQ(execute(), code);
    EXPECT_EQ(takeMessages(),
              messagesWith({{0, 4, kFunction, "Exit code: " + std::to_string(status) + " (ERROR)"}}));
    EXPECT_EQ(returnCode(), status);
}

INSTANTIATE_TEST_SUITE_P(Codes, SWExitCodeTest,
                         testing::Values(std::pair(1, 203), std::pair(2, 203), std::pair(3, 202),
                                         std::pair(4, 203), std::pair(255, 203)),
                         [](const auto& test) { return std::to_string(test.param.first); });

TEST_F(SWScannerTest, AScannerThatASignalEndsHasAStatusFrom128On) {
    scannerIs("CopyFiles");
    put("signal", std::to_string(SIGKILL));
    EXPECT_EQ(execute(), 203);
    EXPECT_EQ(returnCode(), 128 + SIGKILL);
}

TEST_F(SWScannerTest, AScannerThatCannotBeStartedIsLogged) {
    scannerIs("CopyFiles");
    put("status", "7");
    execute();
    ASSERT_EQ(returnCode(), 7);
    remove("quorvis");
    takeMessages();
    EXPECT_EQ(execute(), 203);
    EXPECT_EQ(
        takeMessages(),
        messagesWith({{0, 4, kFunction,
                       "Cannot start \"" + scanner().string() + "\": ENOENT (no such file or directory)"},
                      {0, 4, kFunction, "Execution of command failed.."}}));
    EXPECT_EQ(returnCode(), -1);
}

TEST_F(SWScannerTest, WithoutANameForTheOutputNothingIsLaunched) {
    scannerIs("CopyFiles");
    ZAVSwCtx lost;
    lost.installDir = path().wstring();
    lost.returnCode = 5;
    lost.tmpDir = std::make_unique<zav::TemporaryDir>(nullptr, L"/none");
    zavtest::LogRecorder log;
    lost.log = std::make_unique<zav::ZAVlog>(4, zavtest::LogRecorder::callback, &log);
    EXPECT_EQ(zav::SW_ExecuteScanner(&lost, L"", L"", warnings_, output_), 6);
    EXPECT_EQ(log.messages, (Messages{{0, 4, kFunction, "Can't create output file"}}));
    EXPECT_EQ(lost.returnCode, 5);
    EXPECT_FALSE(std::filesystem::exists(path() / "seen_configuration"));

    lost.log.reset();
    EXPECT_EQ(zav::SW_ExecuteScanner(&lost, L"", L"", warnings_, output_), 6);
}

class SignaturesFileTest : public SWScannerTest, public testing::WithParamInterface<const wchar_t*> {};

TEST_P(SignaturesFileTest, ReachesTheScannerAsOneArgument) {
    scannerIs("ShowArguments");
    ZAV_sw_evaluate_file(context(), GetParam());
    Texts arguments = takePrinted();
    ASSERT_EQ(arguments.size(), 9U);
    EXPECT_EQ(arguments[7], "-i");
    EXPECT_EQ(arguments[8], kest::narrow(GetParam()));
}

TEST_P(SignaturesFileTest, IsLoggedUnchanged) {
    scannerIs("ShowArguments");
    ZAV_sw_evaluate_file(context(), GetParam());
    const Texts texts = takeTextsOf(kFunction);
    const std::string end = " -i \"" + kest::narrow(GetParam()) + "\"]";
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [&end](const std::string& text) {
        return text.starts_with("Executing command: [") && text.ends_with(end);
    }));
}

INSTANTIATE_TEST_SUITE_P(Paths, SignaturesFileTest,
                         testing::Values(L"", L" ", L"a  b", L"\"", L"\"\"", L"a\"b", L"x\" -o \"/tmp/other",
                                         L"-o", L"--root", L"$(id)", L"a\\"));

TEST_F(SWScannerTest, AFileNameThatWouldBeTruncatedAtANulIsRefused) {
    scannerIs("ShowArguments");
    EXPECT_EQ(ZAV_sw_evaluate_file(context(),
                                   L"/w/a\x100"
                                   L"b"),
              203);
    const Texts texts = takeTextsOf(kFunction);
    ASSERT_GE(texts.size(), 2U);
    EXPECT_EQ(texts[texts.size() - 2],
              "Cannot start \"" + scanner().string() + "\": its argument 8 holds a NUL");
    EXPECT_EQ(texts.back(), "Execution of command failed..");
    EXPECT_EQ(returnCode(), -1);
}

TEST(SWScanner, ANullContextIsRefused) {
    std::wstring warnings;
    std::wstring output;
    EXPECT_EQ(zav::SW_ExecuteScanner(nullptr, L"", L"", warnings, output), 3);
}

TEST(SWScannerDirectory, ABlankInItSplitsTheProgramsPath) {
    const zavtest::NothingLeft nothingLeft;
    Evaluation evaluation("with blank");
    evaluation.scannerIs("ShowArguments");
    EXPECT_EQ(evaluation.run(), 203);
    std::filesystem::copy_file(evaluation.scanner(), evaluation.path().parent_path() / "with");
    evaluation.takeMessages();
    EXPECT_EQ(evaluation.run(), 204);
    const Texts arguments = evaluation.takePrinted();
    ASSERT_EQ(arguments.size(), 10U);
    EXPECT_EQ(arguments[1], "blank/quorvis");
}

TEST(SWScannerDirectory, AQuoteInTheTemporaryDirectoryDoesNotSplitFileNames) {
    const zavtest::NothingLeft nothingLeft;
    Evaluation evaluation("toolkit", "a\" -o \"b");
    evaluation.scannerWrites("<QEL><MatchedSignature guid='1'/></QEL>");
    EXPECT_EQ(evaluation.run(), 0);
    EXPECT_EQ(evaluation.guids(), WideTexts{L"1"});
}

TEST(SWScannerDirectory, NoShellReadsTheCommand) {
    for (const char* const name : {"a;id", "$(id)", "`id`", "a&b|c>d<e", "*?[a]", "$HOME", "a'b", "#a"}) {
        Evaluation evaluation(name);
        evaluation.scannerIs("ShowArguments");
        evaluation.run();
        const Texts arguments = evaluation.takePrinted();
        ASSERT_EQ(arguments.size(), 9U) << name;
        EXPECT_EQ(arguments[0], evaluation.scanner());
    }
}

Texts searchPathsOf(Evaluation& evaluation) {
    evaluation.scannerIs("ShowEnvironment");
    evaluation.run();
    Texts entries = evaluation.takePrinted();
    std::erase_if(entries, [](const std::string& entry) { return !entry.starts_with("DYLD_LIBRARY_PATH="); });
    return entries;
}

TEST(SWScannerEnvironment, TheToolkitsDirectoryIsTheLibrarySearchPath) {
    const zavtest::EnvironmentVariable none("DYLD_LIBRARY_PATH", std::nullopt);
    Evaluation evaluation;
    EXPECT_EQ(searchPathsOf(evaluation), Texts{"DYLD_LIBRARY_PATH=" + evaluation.path().string()});
}

TEST(SWScannerEnvironment, TheToolkitsDirectoryStandsBeforeTheHostsSearchPath) {
    const zavtest::EnvironmentVariable set("DYLD_LIBRARY_PATH", "/x");
    Evaluation evaluation;
    EXPECT_EQ(searchPathsOf(evaluation), Texts{"DYLD_LIBRARY_PATH=" + evaluation.path().string() + ":/x"});
}

}  // namespace
}  // namespace swtest
