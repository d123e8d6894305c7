#include "hw/HWConfigFile.h"

#include <gtest/gtest.h>

#include "core/StdioFile.h"
#include "kest/Text.h"
#include "tests/hw/Inventory.h"
#include "tests/support/ConfigText.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ScratchDir.h"

namespace zav {
namespace {

using zavtest::Message;

class HWConfigFileTest : public testing::Test {
  protected:
    HWConfigFileTest() { context_.log = std::make_unique<ZAVlog>(3, zavtest::LogRecorder::callback, &log_); }

    void enable(std::size_t id) { context_.groupEnabled.at(id) = 1; }
    void enableAll() { context_.groupEnabled.fill(1); }

    int generate(const std::string& path) {
        return HW_generateHWConfigFile(&context_, kest::widen(path).c_str());
    }

    std::string generated() {
        const std::string path = directory_.path() / "config.xml";
        EXPECT_EQ(generate(path), 0);
        EXPECT_TRUE(log_.messages.empty());
        return zavtest::readAll(path);
    }

    std::vector<std::string> namesIn(const std::string& config) {
        const std::string before = "\t\t<Group Name=\"";
        const std::string behind = "\"/>\n";
        std::vector<std::string> names;
        for (std::size_t at = config.find(before); at != std::string::npos;
             at = config.find(before, at + 1)) {
            const std::size_t begin = at + before.size();
            names.push_back(config.substr(begin, config.find(behind, begin) - begin));
        }
        return names;
    }

    ZAVHwCtx context_;
    zavtest::LogRecorder log_;
    zavtest::ScratchDir directory_;
};

std::string expected(const std::string& groups) {
    return zavtest::configText("Hardware", groups);
}

TEST_F(HWConfigFileTest, ListsTheEnabledGroupsByteForByte) {
    enable(4);
    enable(2);
    EXPECT_EQ(generated(), expected("\t\t<Group Name=\"Processor\"/>\n"
                                    "\t\t<Group Name=\"Operating System\"/>\n"));
}

TEST_F(HWConfigFileTest, IsWrittenWithoutAnyGroupToo) {
    EXPECT_EQ(generated(), expected(""));
}

TEST_F(HWConfigFileTest, ListsEveryGroupInTheOrderOfTheCatalogue) {
    enableAll();
    std::vector<std::string> catalogue;
    for (const HWGroup* row = nextGroup(nullptr); row != nullptr; row = nextGroup(row)) {
        catalogue.emplace_back(row->displayName);
    }
    EXPECT_EQ(namesIn(generated()), catalogue);
}

TEST_F(HWConfigFileTest, FlagsOfIdsWithoutAGroupHaveNoEffect) {
    for (const std::size_t id : {0U, 17U, 18U, 33U}) enable(id);
    EXPECT_EQ(generated(), expected(""));
}

TEST_F(HWConfigFileTest, OnlyTheFlagValueOneEnables) {
    for (const int flag : {2, 128, 255}) {
        context_.groupEnabled.fill(static_cast<unsigned char>(flag));
        EXPECT_EQ(generated(), expected("")) << flag;
    }
}

TEST_F(HWConfigFileTest, ReplacesWhatTheFileHeld) {
    directory_.write("config.xml", std::string(10'000, 'x'));
    EXPECT_EQ(generated(), expected(""));
}

TEST_F(HWConfigFileTest, ThePathIsCutToTheLowEightBits) {
    const std::wstring path = kest::widen(directory_.path().string()) + L"/\x0161.xml";
    EXPECT_EQ(HW_generateHWConfigFile(&context_, path.c_str()), 0);
    EXPECT_EQ(zavtest::readAll(directory_.path() / "a.xml"), expected(""));
}

TEST_F(HWConfigFileTest, AFileThatCannotBeOpenedIsRefusedSilently) {
    for (const std::string path :
         {directory_.path() / "missing" / "config.xml", directory_.path(), std::filesystem::path()}) {
        EXPECT_EQ(generate(path), 102) << path;
    }
    EXPECT_TRUE(log_.messages.empty());
}

// The content fits into the stream's buffer, so the full disk is detected when the file is closed.
TEST_F(HWConfigFileTest, AFullDiskThatShowsOnlyAtTheEndIsAFailedWrite) {
    enableAll();
    EXPECT_EQ(generate("/dev/full"), 102);
    EXPECT_EQ(log_.messages,
              (std::vector<Message>{{0, 3, "generateHWConfigFile()", "Error during write [/dev/full]"}}));
}

TEST_F(HWConfigFileTest, NoFaultNeedsALogger) {
    context_.log.reset();
    EXPECT_EQ(generate("/dev/full"), 102);
    EXPECT_EQ(generate("/"), 102);
}

TEST_F(HWConfigFileTest, WriteDataWritesATextWithoutItsEnd) {
    const std::string path = directory_.path() / "file";
    {
        const StdioFile file = openFile(path.c_str(), "we");
        EXPECT_TRUE(HW_writeData(&context_, file.get(), "one "));
        EXPECT_TRUE(HW_writeData(&context_, file.get(), ""));
        EXPECT_TRUE(HW_writeData(nullptr, file.get(), "two\n"));
    }
    EXPECT_EQ(zavtest::readAll(path), "one two\n");
}

TEST_F(HWConfigFileTest, WriteDataReportsAFailedWrite) {
    const StdioFile full = openFile("/dev/full", "we");
    std::setvbuf(full.get(), nullptr, _IONBF, 0);
    EXPECT_FALSE(HW_writeData(&context_, full.get(), "text"));

    const StdioFile readOnly = openFile("/dev/null", "re");
    EXPECT_FALSE(HW_writeData(&context_, readOnly.get(), "text"));
}

}  // namespace
}  // namespace zav
