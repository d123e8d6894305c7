// Runs `zav diff` as a whole process.
#include <gtest/gtest.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "tests/cli/Process.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

class DiffTest : public testing::Test {
  protected:
    static std::string disk(const std::string& model) {
        return R"({"groups": {"Storage": [{"DeviceID": "/dev/sda", "Model": ")" + model + R"("}]}})";
    }
    Ended diff(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "diff");
        return Process(std::move(arguments)).directory(scratch_.path().string()).run();
    }

    ScratchDir scratch_;
    std::string one_ = scratch_.write("one.json", disk("A")).string();
    std::string other_ = scratch_.write("other.json", disk("B")).string();
};

TEST_F(DiffTest, TheSameInventoryHasStatusZeroAndNoOutput) {
    const Ended ended = diff({one_, one_});
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.out + ended.err);
}

TEST_F(DiffTest, ADifferenceHasStatusOne) {
    const Ended ended = diff({"one.json", "other.json"});
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("--- one.json\n+++ other.json\n\nStorage\n    /dev/sda, B\n      Model: A -> B\n", ended.out);
    EXPECT_EQ("", ended.err);
}

TEST_F(DiffTest, JsonHasOldAndNewValues) {
    const Ended ended = diff({one_, other_, "--format", "json"});
    EXPECT_EQ(1, ended.status);
    const Json json = Json::parse(ended.out);
    EXPECT_EQ(false, json.at("same"));
    EXPECT_EQ(true, json.at("machineDiffers"));
    const Json& changed = json.at("groups").at("Storage").at("changed");
    ASSERT_EQ(1U, changed.size());
    EXPECT_EQ((Json{{"DeviceID", "/dev/sda"}}), changed.at(0).at("key"));
    EXPECT_EQ((Json{{"Model", {{"old", "A"}, {"new", "B"}}}}), changed.at(0).at("fields"));
    const Ended same = diff({one_, one_, "--format", "json"});
    EXPECT_EQ(0, same.status);
    EXPECT_EQ(true, Json::parse(same.out).at("same"));
}

TEST_F(DiffTest, FormatsMayDiffer) {
    scratch_.write("one.xml",
                   "<Hardware><Storage><DeviceID>/dev/sda</DeviceID><Model>A</Model></Storage></Hardware>");
    EXPECT_EQ(0, diff({"one.json", "one.xml"}).status);
    EXPECT_EQ(1, diff({"other.json", "one.xml"}).status);
}

TEST_F(DiffTest, TroubleHasStatusTwoAndNamesFileAndLine) {
    scratch_.write("cut.json", "{\"groups\": {\n\"Storage\": [");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"one.json", "none.json"}, "zav: cannot read 'none.json': No such file or directory\n"},
        {{"one.json", "."}, "zav: cannot read '.': Is a directory\n"},
        {{"one.json", "cut.json"}, "zav: cut.json:2: the JSON ends too early\n"},
        {{"-", "-"}, "zav: only one of the inventories can be standard input\n"},
        {{"one.json", "other.json", "-o", "none/out"},
         "zav: cannot write 'none/out': No such file or directory\n"},
    };
    for (const auto& [arguments, message] : cases) {
        const Ended ended = diff(arguments);
        EXPECT_EQ(2, ended.status) << message;
        EXPECT_EQ(message, ended.err);
        EXPECT_EQ("", ended.out);
    }
    EXPECT_EQ(2, diff({"one.json"}).status);
    EXPECT_EQ(2, diff({"one.json", "one.json", "--format", "csv"}).status);
}

TEST_F(DiffTest, ALostMessageOrOutputIsTrouble) {
    Process full({"diff", one_, other_});
    EXPECT_EQ(2, full.outputTo("/dev/full").run().status);
    scratch_.write("memory.json", R"({"groups": {"Memory": []}})");
    Process note({"diff", one_, (scratch_.path() / "memory.json").string()});
    EXPECT_EQ(2, note.errorTo("/dev/full").run().status);
}

TEST_F(DiffTest, OutputGoesToTheFile) {
    const Ended ended = diff({"one.json", "other.json", "--output", "out"});
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ(diff({"one.json", "other.json"}).out, readAll(scratch_.path() / "out"));
}

class DiffOfThisMachine : public testing::Test {
  protected:
    std::string scan(const std::string& name, const std::string& format, bool asOther = false) {
        Process process({"hw", "--format", format});
        process.locationFile(std::nullopt);
        constexpr unsigned int kNobody = 65534;
        if (asOther) process.user(kNobody).environment("TEMP", "/tmp");
        const Ended ended = process.run();
        EXPECT_EQ(0, ended.status) << ended.err;
        return scratch_.write(name, ended.out).string();
    }
    static Ended diff(const std::string& before, const std::string& after) {
        return Process({"diff", before, after}).run();
    }

    ScratchDir scratch_;
};

TEST_F(DiffOfThisMachine, TwoScansDoNotDiffer) {
    const std::string first = scan("first.json", "json");
    for (const char* const format : {"json", "xml", "json"}) {
        const Ended ended = diff(first, scan("next", format));
        EXPECT_EQ(0, ended.status) << ended.out;
        EXPECT_EQ("", ended.out + ended.err);
    }
}

TEST_F(DiffOfThisMachine, BetweenRootAndAnotherUserOnlyWhatNeedsRootDiffers) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can scan as root";
    const std::string root = scan("root.json", "json");
    const std::string user = scan("user.json", "json", true);
    for (const auto& [before, after] : {std::pair(root, user), std::pair(user, root)}) {
        const Ended ended = Process({"diff", before, after, "--format", "json"}).run();
        EXPECT_EQ(1, ended.status) << ended.err;
        EXPECT_EQ("", ended.err);
        const Json json = Json::parse(ended.out);
        EXPECT_EQ(false, json.at("machineDiffers")) << ended.out;
        EXPECT_FALSE(json.at("groups").empty()) << "other users cannot read /etc/shadow";
        EXPECT_EQ(0, Process({"diff", before, after, "--ignore-access"}).run().status);
    }
}

}  // namespace
}  // namespace zavtest
