// Runs `zav hw` as a whole process with test scanners.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/CsvReader.h"
#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/cli/XmlReader.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

class HardwareTest : public testing::Test {
  protected:
    // By default the scanner answers with the prepared output. Temporary files go to the scratch directory.
    Process hw(std::vector<std::string> arguments, const std::string& scannerName = "copies") {
        arguments.insert(arguments.begin(), {"hw", "--toolkit", scanner(scannerName)});
        return Process(arguments)
            .environment("ZAVTEST_OUTPUT", prepared_)
            .environment("TEMP", temporary_.string());
    }
    bool temporaryFilesAreGone() const { return std::filesystem::is_empty(temporary_); }
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    bool onlyOutputIsThere() const {
        for (const auto& file : std::filesystem::directory_iterator(scratch_.path())) {
            if (file.path().filename().string().starts_with(".")) return false;
        }
        return true;
    }

    ScratchDir scratch_;
    std::string prepared_ = scratch_.write("prepared.xml", kPreparedOutput).string();
    std::filesystem::path temporary_ = scratch_.write("tmp/x", "").parent_path();

    void SetUp() override { std::filesystem::remove(temporary_ / "x"); }
};

TEST_F(HardwareTest, TableShowsAllGroups) {
    const Ended ended = hw({}).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
    EXPECT_EQ(0U, ended.out.find(
                      "OperatingSystem\n  Name     linux\n  Caption  Gr\xc3\xb6\xc3\x9f \xf0\x9f\x98\x80\n"
                      "  Notes    one\\ntwo\n\nProcessor (2)\n"))
        << ended.out;
    EXPECT_NE(std::string::npos,
              ended.out.find(
                  "Nothing found, and the scanner does not report whether it is complete, for: ComponentID"))
        << ended.out;
    EXPECT_TRUE(temporaryFilesAreGone());
}

TEST_F(HardwareTest, JsonContainsEveryGroupAndTheScan) {
    const Ended ended = hw({"--format", "json"}).run();
    ASSERT_EQ(0, ended.status);
    const Json json = Json::parse(ended.out);
    EXPECT_EQ(48U, json.at("groups").size());
    EXPECT_EQ("cpu1", json.at("groups").at("Processor").at(1).at("DeviceID"));
    EXPECT_EQ((Json{{"Name", "linux"},
                    {"Caption", "Gr\xc3\xb6\xc3\x9f \xf0\x9f\x98\x80"},
                    {"Notes", "one\ntwo"},
                    {"Empty", ""}}),
              json.at("groups").at("OperatingSystem").at(0));
    EXPECT_EQ(Json(scanner("copies")), json.at("scan").at("toolkit"));
    EXPECT_FALSE(json.at("scan").contains("root"));
}

TEST_F(HardwareTest, OnlyNamedGroupsAreScannedInTheirOrder) {
    const Ended ended = hw({"--group", "operating system", "--group", "2", "--format", "json"}).run();
    ASSERT_EQ(0, ended.status);
    std::vector<std::string> names;
    const Json json = Json::parse(ended.out);
    for (const auto& [name, instances] : json.at("groups").items()) names.push_back(name);
    EXPECT_EQ((std::vector<std::string>{"OperatingSystem", "Processor"}), names);
}

TEST_F(HardwareTest, CsvOfOneGroupHasAColumnPerField) {
    const auto records = readCsv(hw({"--format", "csv", "--group", "Processor"}).run().out);
    ASSERT_EQ(3U, records.size());
    EXPECT_EQ("DeviceID", records[0][0]);
    EXPECT_EQ("Name", records[0][1]);
    EXPECT_EQ("A, \"B\" & <C>", records[1][1]);
    EXPECT_EQ("cpu1", records[2][0]);
    for (const CsvRecord& record : records) EXPECT_EQ(records[0].size(), record.size());
}

TEST_F(HardwareTest, CsvOfSeveralGroupsHoldsOneRecordPerField) {
    const Ended ended = hw({"--format", "csv", "--group", "Processor", "--group", "Storage"}).run();
    ASSERT_EQ(0, ended.status);
    const auto records = readCsv(ended.out);
    ASSERT_EQ(9U, records.size());
    EXPECT_EQ((CsvRecord{"Processor", "", "_status", "unknown"}), records[1]);
    EXPECT_EQ((CsvRecord{"Processor", "0", "Name", "A, \"B\" & <C>"}), records[3]);
    EXPECT_EQ((CsvRecord{"Processor", "1", "CoreId", "1"}), records[7]);
}

TEST_F(HardwareTest, XmlCanBeReadByTheLibrary) {
    const Ended first = hw({"--format", "xml"}).run();
    ASSERT_EQ(0, first.status);
    ASSERT_TRUE(readXml(first.out));
    EXPECT_EQ(3U, readXml(first.out)->size());
    prepared_ = scratch_.write("again.xml", first.out).string();
    const Ended second = hw({"--format", "xml"}).run();
    EXPECT_EQ(0, second.status);
    EXPECT_EQ(first.out, second.out);
}

TEST_F(HardwareTest, OutputGoesOnlyToTheFile) {
    const Ended ended = hw({"--format", "csv", "--output", path("out")}).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.out + ended.err);
    EXPECT_EQ(hw({"--format", "csv"}).run().out, readAll(path("out")));
    EXPECT_TRUE(onlyOutputIsThere());
}

TEST_F(HardwareTest, OutputNamedMinusIsStandardOutput) {
    const Ended ended = hw({"--format", "csv", "--output", "-"}).directory(scratch_.path().string()).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ(hw({"--format", "csv"}).run().out, ended.out);
    EXPECT_FALSE(std::filesystem::exists(path("-")));
}

TEST_F(HardwareTest, DeviceAsOutputIsRefusedBeforeTheScan) {
    const Ended ended = hw({"-vv", "--output", "/dev/null"}).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ(
        "zav: cannot write '/dev/null': it is a device; to write to standard output, omit --output or use "
        "'--output -'\n",
        ended.err);
}

TEST_F(HardwareTest, UnwritableOutputIsReportedWithItsPath) {
    const Ended ended = hw({"--output", path("none/out")}).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("zav: cannot write '" + path("none/out") + "': No such file or directory\n", ended.err);
}

TEST_F(HardwareTest, FailedScanKeepsAnEarlierOutput) {
    scratch_.write("out", "earlier");
    EXPECT_EQ(1, hw({"--output", path("out")}, "fails").run().status);
    EXPECT_EQ("earlier", readAll(path("out")));
    EXPECT_TRUE(onlyOutputIsThere());
}

TEST_F(HardwareTest, FullStandardOutputIsAFailure) {
    const Ended ended = hw({}).outputTo("/dev/full").run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("zav: cannot write to standard output: No space left on device\n", ended.err);
}

TEST_F(HardwareTest, ScannerThatFailsIsReportedWithItsStatus) {
    const Ended ended = hw({}, "fails").run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ(
        "zav: Exit code: 3 (ERROR)\nzav: the scanner " + scanner("fails") + "/quorvah failed with status 3\n",
        ended.err);
    EXPECT_TRUE(temporaryFilesAreGone());
}

TEST_F(HardwareTest, ScannerEndedBySignalIsReportedWithTheSignal) {
    const Ended ended = hw({}, "crashes").run();
    EXPECT_EQ(1, ended.status);
    EXPECT_NE(std::string::npos,
              ended.err.find("zav: signal 9 ended the scanner " + scanner("crashes") + "/quorvah\n"))
        << ended.err;
}

TEST_F(HardwareTest, TruncatedScannerOutputIsRefused) {
    for (const char* format : {"table", "json", "csv", "xml"}) {
        const Ended ended = hw({"--format", format}, "cut_off").run();
        EXPECT_EQ(1, ended.status);
        EXPECT_EQ("", ended.out);
        EXPECT_NE(std::string::npos, ended.err.find("zav: the hardware scanner wrote no valid inventory"))
            << ended.err;
    }
    EXPECT_TRUE(temporaryFilesAreGone());
}

TEST_F(HardwareTest, ProgramThatCannotBeStartedIsReported) {
    const auto file = scratch_.write("broken/quorvah", "no program at all");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    const Ended ended = Process({"hw", "--toolkit", file.parent_path().string()}).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_NE(std::string::npos,
              ended.err.find("zav: the scanner " + file.string() + " could not be started\n"))
        << ended.err;
}

TEST_F(HardwareTest, MissingTemporaryDirectoryIsReported) {
    const Ended ended = hw({}).environment("TEMP", path("no/such/place")).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ(
        0U, ended.err.find("zav: no temporary directory could be made: " + path("no/such/place") + "/zav-"));
    EXPECT_NE(std::string::npos,
              ended.err.find("*: No such file or directory; TEMP or TMP can name another place\n"))
        << ended.err;
}

TEST_F(HardwareTest, BadUsageExitsWithTwoWithoutAScan) {
    const std::vector<std::vector<std::string>> cases = {
        {"--nope"},
        {"--group", "Procesor"},
        {"--format", "toml"},
        {"--root", path("none")},
        {"--root", prepared_},
        {"extra"},
    };
    for (const auto& arguments : cases) {
        const Ended ended = hw(arguments).run();
        EXPECT_EQ(2, ended.status) << arguments[0];
        EXPECT_EQ("", ended.out) << arguments[0];
        EXPECT_EQ(0U, ended.err.find("zav: ")) << ended.err;
    }
}

TEST_F(HardwareTest, UnknownGroupIsRefusedWithASuggestion) {
    EXPECT_EQ("zav: unknown group 'Procesor'; did you mean Processor? 'zav groups' lists all\n",
              hw({"--group", "Procesor"}).run().err);
}

TEST_F(HardwareTest, ToolkitWithoutScannerIsBadUsage) {
    const Ended ended = Process({"hw", "--toolkit", temporary_.string()}).run();
    EXPECT_EQ(2, ended.status);
    EXPECT_EQ("zav: --toolkit: '" + temporary_.string() + "' contains no program 'quorvah'\n", ended.err);
}

TEST_F(HardwareTest, ToolkitPathWithBlankIsRefusedWithTheReason) {
    std::filesystem::create_directory_symlink(scanner("copies"), path("my tools"));
    const Ended ended = Process({"hw", "--toolkit", path("my tools")}).run();
    EXPECT_EQ(2, ended.status);
    EXPECT_NE(std::string::npos, ended.err.find("cannot start a scanner from a path with blanks"))
        << ended.err;
}

TEST_F(HardwareTest, ToolkitPathOutsideAsciiWorks) {
    for (const char* name : {"gr\xc3\xb6\xc3\x9f", "\xff\x80\x01"}) {
        std::filesystem::create_directory_symlink(scanner("copies"), path(name));
        const Ended ended =
            Process({"hw", "--toolkit", path(name)}).environment("ZAVTEST_OUTPUT", prepared_).run();
        EXPECT_EQ(0, ended.status) << ended.err;
    }
}

TEST_F(HardwareTest, RelativeToolkitPathWorks) {
    std::filesystem::create_directory_symlink(scanner("copies"), path("tools"));
    const Ended ended = Process({"hw", "--toolkit", "tools"})
                            .directory(scratch_.path().string())
                            .environment("ZAVTEST_OUTPUT", prepared_)
                            .run();
    EXPECT_EQ(0, ended.status) << ended.err;
}

TEST_F(HardwareTest, RootIsPassedToTheScannerAndRecorded) {
    const Ended ended =
        hw({"--root", temporary_.string(), "--format", "json", "--group", "ScanInfo"}, "tells_root").run();
    ASSERT_EQ(0, ended.status) << ended.err;
    const Json json = Json::parse(ended.out);
    EXPECT_EQ(Json(temporary_.string()), json.at("groups").at("ScanInfo").at(0).at("RootPath"));
    EXPECT_EQ(Json(temporary_.string()), json.at("scan").at("root"));
}

TEST_F(HardwareTest, NoRootIsPassedByDefault) {
    const Ended ended = hw({"--format", "json", "--group", "ScanInfo"}, "tells_root").run();
    EXPECT_EQ("none", Json::parse(ended.out).at("groups").at("ScanInfo").at(0).at("RootPath"));
}

TEST_F(HardwareTest, VerboseMessagesGoToStandardErrorOnly) {
    const Ended quiet = hw({}).run();
    const Ended notable = hw({"-v"}).run();
    const Ended trace = hw({"-vv"}).run();
    EXPECT_EQ(quiet.out, notable.out);
    EXPECT_EQ(quiet.out, trace.out);
    EXPECT_NE(std::string::npos, notable.err.find("zav: Default location [")) << notable.err;
    EXPECT_EQ(std::string::npos, notable.err.find("STDOUT data"));
    EXPECT_NE(std::string::npos,
              trace.err.find("ZAV_hw_run: STDOUT data: [group Processor: 1 instances, 0 ms]\n"));
    EXPECT_NE(std::string::npos, trace.err.find("ZAV_init: init OK"));
}

}  // namespace
}  // namespace zavtest
