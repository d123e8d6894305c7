#include "cli/scan/Toolkit.h"

#include <gtest/gtest.h>

#include "cli/system/Failure.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

class ToolkitTest : public testing::Test {
  protected:
    // A directory that contains a program of that name.
    std::string directoryWith(const std::string& name, const std::string& program = "quorvah",
                              bool executable = true) {
        const auto file = scratch_.write(name + "/" + program, "#!/bin/true\n");
        if (executable) std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        return file.parent_path().string();
    }
    std::string emptyDirectory(const std::string& name) {
        std::filesystem::create_directories(scratch_.path() / name);
        return (scratch_.path() / name).string();
    }
    static std::string refusal(const ToolkitCandidates& places, int status) {
        try {
            return "chose " + chooseToolkit(places, kHardwareScanner).directory;
        } catch (const Failure& failure) {
            EXPECT_EQ(status, failure.status());
            return failure.what();
        }
    }

    zavtest::ScratchDir scratch_;
};

TEST_F(ToolkitTest, GivenDirectoryWins) {
    const Toolkit toolkit = chooseToolkit(
        {directoryWith("given"), directoryWith("configured"), {directoryWith("bundled")}}, kHardwareScanner);
    EXPECT_EQ(ToolkitSource::Given, toolkit.source);
    EXPECT_EQ(directoryWith("given"), toolkit.directory);
}

TEST_F(ToolkitTest, ConfiguredDirectoryIsPreferredToTheBundledOne) {
    const Toolkit toolkit = chooseToolkit(
        {std::nullopt, directoryWith("configured"), {directoryWith("bundled")}}, kHardwareScanner);
    EXPECT_EQ(ToolkitSource::Configured, toolkit.source);
    EXPECT_EQ(directoryWith("configured"), toolkit.directory);
}

TEST_F(ToolkitTest, ConfiguredDirectoryWithoutScannerIsSkipped) {
    const Toolkit toolkit = chooseToolkit(
        {std::nullopt, emptyDirectory("configured"), {directoryWith("bundled")}}, kHardwareScanner);
    EXPECT_EQ(ToolkitSource::Bundled, toolkit.source);
}

TEST_F(ToolkitTest, ConfiguredDirectoryWithBlankIsNotReplacedByAnother) {
    const std::string text =
        refusal({std::nullopt, directoryWith("my tools"), {directoryWith("bundled")}}, kExitFailed);
    EXPECT_NE(std::string::npos, text.find("blanks")) << text;
}

TEST_F(ToolkitTest, BundledDirectoriesAreTriedInOrder) {
    const std::string second = directoryWith("second");
    EXPECT_EQ(
        second,
        chooseToolkit({std::nullopt, "", {emptyDirectory("first"), second}}, kHardwareScanner).directory);
}

TEST_F(ToolkitTest, GivenDirectoryWithoutScannerIsRefusedEvenIfAnotherHasOne) {
    const std::string empty = emptyDirectory("empty");
    EXPECT_EQ("--toolkit: '" + empty + "' contains no program 'quorvah'",
              refusal({empty, directoryWith("configured"), {}}, kExitBadUsage));
}

TEST_F(ToolkitTest, GivenFileIsRefused) {
    EXPECT_EQ("--toolkit: '/no/such/place' is not a directory",
              refusal({"/no/such/place", "", {}}, kExitBadUsage));
    EXPECT_EQ("--toolkit: '' is not a directory", refusal({"", "", {}}, kExitBadUsage));
}

TEST_F(ToolkitTest, GivenDirectoryWithBlankIsRefusedWithTheReason) {
    const std::string text = refusal({directoryWith("my tools"), "", {}}, kExitBadUsage);
    EXPECT_NE(std::string::npos, text.find("my tools")) << text;
    EXPECT_NE(std::string::npos, text.find("blanks")) << text;
}

TEST_F(ToolkitTest, OnlyDirectoryWithBlankIsAFailureWithTheReason) {
    const std::string text = refusal({std::nullopt, "", {directoryWith("my tools")}}, kExitFailed);
    EXPECT_NE(std::string::npos, text.find("blanks")) << text;
}

TEST_F(ToolkitTest, MissingScannerIsReportedWithAllDirectories) {
    EXPECT_EQ("no hardware scanner 'quorvah' in /a or /b or /c; use --toolkit to name its directory",
              refusal({std::nullopt, "/a", {"/b", "/c"}}, kExitFailed));
}

TEST_F(ToolkitTest, EachScannerHasAToolkitOfItsOwn) {
    const ToolkitCandidates places{
        std::nullopt, directoryWith("configured"), {directoryWith("both", "quorvis")}};
    EXPECT_EQ(ToolkitSource::Configured, chooseToolkit(places, kHardwareScanner).source);
    EXPECT_EQ(ToolkitSource::Bundled, chooseToolkit(places, kSoftwareScanner).source);
}

TEST_F(ToolkitTest, ProgramMustBeAnExecutableFile) {
    EXPECT_TRUE(containsProgram(directoryWith("good"), "quorvah"));
    EXPECT_FALSE(containsProgram(directoryWith("plain", "quorvah", false), "quorvah"));
    EXPECT_FALSE(containsProgram(directoryWith("other", "quorvis"), "quorvah"));
    emptyDirectory("nested/quorvah");
    EXPECT_FALSE(containsProgram((scratch_.path() / "nested").string(), "quorvah"));
}

TEST(Toolkit, BlanksAndQuotesPreventStarting) {
    for (const char* usable : {"/opt/zav/bin", "/opt/z\xc3\xa4v", "/opt/a;b$(c)'d"})
        EXPECT_TRUE(isStartablePath(usable)) << usable;
    for (const char* unusable : {"/opt/my tools", " /opt", "/opt/a\tb", "/opt/\"q\""})
        EXPECT_FALSE(isStartablePath(unusable)) << unusable;
}

TEST(Toolkit, BundledScannersAreBesideTheCommandOrInLibexec) {
    EXPECT_EQ((std::vector<std::string>{"/usr/bin", "/usr/libexec/zav/bin"}),
              bundledDirectories("/usr/bin/zav"));
}

TEST(Toolkit, ThisCommandIsTheRunningExecutable) {
    EXPECT_TRUE(std::filesystem::is_regular_file(commandPath()));
    EXPECT_EQ("zav_cli_tests", commandPath().filename());
}

}  // namespace
}  // namespace zavcli
