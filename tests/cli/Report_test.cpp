// `zav report` as a whole process. What the page does with its data is tested in a browser (scripts/report-page).
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kToday = R"({"scan": {}, "status": {"Storage": {"status": "complete"}},
  "groups": {"Storage": [{"DeviceID": "/dev/sda", "Model": "</script><b>"}, {"DeviceID": "/dev/sdb"}]}})";
constexpr const char* kYesterday = R"({"scan": {}, "status": {"Storage": {"status": "complete"}},
  "groups": {"Storage": [{"DeviceID": "/dev/sda", "Model": "old"}]}})";
constexpr const char* kNoSoftware = "zav: the page shows no software: a saved hardware inventory has none\n";

class ReportTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }

    // The data in a page.
    static Json dataOf(const std::string& page) {
        const std::string begin = R"(<script id="data" type="application/json">)";
        const std::size_t start = page.find(begin);
        const std::size_t end = page.find("</script>", start);
        if (start == std::string::npos || end == std::string::npos) return {};
        return Json::parse(page.substr(start + begin.size(), end - start - begin.size()));
    }

    ScratchDir scratch_;
    std::string today_ = scratch_.write("today.json", kToday).string();
    std::string yesterday_ = scratch_.write("yesterday.json", kYesterday).string();
};

TEST_F(ReportTest, APageHasTheSavedInventoryAsItsData) {
    const Ended ended = Process({"report", "--from", today_}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(kNoSoftware, ended.err);
    EXPECT_TRUE(ended.out.starts_with("<!doctype html>"));
    const Json data = dataOf(ended.out);
    EXPECT_EQ("</script><b>", data.at("hardware").at("groups").at("Storage").at(0).at("Model"));
    EXPECT_EQ("DeviceID", data.at("catalogue").at("Storage").at("fields").at(0).at("name"));
    EXPECT_TRUE(data.at("software").is_null());
    EXPECT_TRUE(data.at("changes").is_null());
}

TEST_F(ReportTest, NoSoftwareIsNotToldIfNoneIsWanted) {
    EXPECT_EQ("", Process({"report", "--from", today_, "--no-software"}).run().err);
}

TEST_F(ReportTest, ChangesSinceAnEarlierInventoryAreInThePage) {
    const Ended ended = Process({"report", "--from", today_, "--compare", yesterday_}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    const Json changes = dataOf(ended.out).at("changes").at("groups").at("Storage");
    EXPECT_EQ("/dev/sdb", changes.at("added").at(0).at("key").at("DeviceID"));
    EXPECT_EQ("old", changes.at("changed").at(0).at("fields").at("Model").at("old"));
}

TEST_F(ReportTest, AScanOfTheHardwareIsShown) {
    const std::string prepared = scratch_.write("prepared.xml", kPreparedOutput).string();
    const Ended ended = Process({"report", "--toolkit", scanner("copies"), "--no-software"})
                            .environment("ZAVTEST_OUTPUT", prepared)
                            .run();
    EXPECT_EQ(0, ended.status) << ended.err;
    const Json groups = dataOf(ended.out).at("hardware").at("groups");
    EXPECT_EQ("cpu1", groups.at("Processor").at(1).at("DeviceID"));
}

TEST_F(ReportTest, ADamagedInventoryIsNamedAndNoPageIsWritten) {
    const std::string damaged = scratch_.write("damaged.json", "{\"groups\":").string();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"report", "--from", damaged, "-o", path("page.html")},
          {"report", "--from", today_, "--compare", damaged, "-o", path("page.html")}}) {
        const Ended ended = Process(arguments).run();
        EXPECT_EQ(2, ended.status);
        EXPECT_NE(std::string::npos, ended.err.find(damaged)) << ended.err;
    }
    EXPECT_FALSE(std::filesystem::exists(path("page.html")));
}

TEST_F(ReportTest, AnOutputFileThatCannotBeWrittenIsNamed) {
    const Ended ended = Process({"report", "--from", today_, "-o", path("absent/page.html")}).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_NE(std::string::npos, ended.err.find("absent")) << ended.err;
}

TEST_F(ReportTest, OptionsThatContradictEachOtherAreRefused) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"report", "--no-hardware", "--no-software"},
          {"report", "--from", today_, "--sanitize"},
          {"report", "--from", today_, "--root", "/"},
          {"report", "--no-hardware", "--compare", yesterday_}}) {
        EXPECT_EQ(2, Process(arguments).run().status) << arguments[1];
    }
}

}  // namespace
}  // namespace zavtest
