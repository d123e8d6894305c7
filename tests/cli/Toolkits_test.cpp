// Which toolkit the command uses on machines with and without an installed one, and what `zav doctor` reports about it.
#include <gtest/gtest.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

class ToolkitsTest : public testing::Test {
  protected:
    // A copy of the command in a directory tree of its own, as ROOT/bin/zav.
    std::string installedCommand() {
        const auto place = scratch_.path() / "installed" / "bin" / "zav";
        std::filesystem::create_directories(place.parent_path());
        std::filesystem::copy_file(ZAVTEST_COMMAND, place, std::filesystem::copy_options::overwrite_existing);
        return place.string();
    }
    // Copies a hardware scanner to that directory below the scratch directory.
    std::string place(const std::string& name, const std::string& directory) {
        const auto target = scratch_.path() / directory;
        std::filesystem::create_directories(target);
        std::filesystem::copy_file(scanner(name) + "/quorvah", target / "quorvah");
        return target.string();
    }
    static void addSoftwareScanner(const std::string& name, const std::string& directory) {
        std::filesystem::copy_file(scanner(name) + "/quorvis", directory + "/quorvis");
    }
    Process zav(std::vector<std::string> arguments) {
        return Process(std::move(arguments))
            .program(installedCommand())
            .environment("ZAVTEST_OUTPUT", prepared_);
    }
    static std::string toolkitOf(const Ended& ended) {
        EXPECT_EQ(0, ended.status) << ended.err;
        return ended.status == 0
                   ? nlohmann::json::parse(ended.out).at("scan").at("toolkit").get<std::string>()
                   : "";
    }
    static bool says(const Ended& ended, const std::string& line) {
        return ended.out.find(line) != std::string::npos;
    }

    ScratchDir scratch_;
    std::string prepared_ = scratch_.write("prepared.xml", kPreparedOutput).string();
};

TEST_F(ToolkitsTest, ScannerBesideTheCommandIsFound) {
    const std::string bundled = place("copies", "installed/bin");
    EXPECT_EQ(bundled, toolkitOf(zav({"hw", "--format", "json"}).locationFile(std::nullopt).run()));
}

TEST_F(ToolkitsTest, ScannerInLibexecIsFound) {
    const std::string bundled = place("copies", "installed/libexec/zav/bin");
    EXPECT_EQ(bundled, toolkitOf(zav({"hw", "--format", "json"}).locationFile(std::nullopt).run()));
}

TEST_F(ToolkitsTest, ConfiguredToolkitIsPreferredToTheBundledOne) {
    place("fails", "installed/bin");
    const std::string configured = place("copies", "opt/bin");
    const std::string ini =
        "ZAV_HomeDirectory = " + (scratch_.path() / "opt").string() + "\nZAV_Exploiters = zav\n";
    const Ended ended = zav({"hw", "--format", "json"}).locationFile(ini).run();
    EXPECT_EQ(configured, toolkitOf(ended));
    EXPECT_EQ("", ended.err);
}

TEST_F(ToolkitsTest, ConfiguredToolkitWithoutScannerIsSkipped) {
    const std::string bundled = place("copies", "installed/bin");
    EXPECT_EQ(bundled,
              toolkitOf(zav({"hw", "--format", "json"}).locationFile("ZAV_HomeDirectory = /nope\n").run()));
}

TEST_F(ToolkitsTest, ConfiguredToolkitAndTemporaryDirectoryOutsideAsciiAreUsed) {
    place("fails", "installed/bin");
    const std::string configured = place("copies", "gr\xc3\xb6\xc3\x9f/bin");
    const auto temporary = scratch_.path() / "tempor\xc3\xa4r";
    std::filesystem::create_directory(temporary);
    const std::string ini = "ZAV_HomeDirectory = /nope\nZAV_HomeDirectory = " +
                            (scratch_.path() / "gr\xc3\xb6\xc3\x9f").string() + "\n";
    const Ended ended =
        zav({"hw", "--format", "json"}).environment("TEMP", temporary.string()).locationFile(ini).run();
    EXPECT_EQ(configured, toolkitOf(ended));
    EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

TEST_F(ToolkitsTest, SkippedConfiguredToolkitIsReported) {
    const std::string bundled = place("copies", "installed/bin");
    const Ended ended = zav({"hw"}).locationFile("ZAV_HomeDirectory = /nope\n").run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ(0U,
              ended.err.find(
                  "zav: /etc/zav/zav.ini names /nope/bin, which contains no program 'quorvah'; the one in " +
                  bundled + " is used\n"))
        << ended.err;
}

TEST_F(ToolkitsTest, GivenToolkitIsPreferred) {
    place("fails", "installed/bin");
    const std::string given = place("copies", "given");
    const std::string ini = "ZAV_HomeDirectory = " + place("fails", "opt/bin") + "/..\n";
    EXPECT_EQ(given, toolkitOf(zav({"hw", "--format", "json", "--toolkit", given}).locationFile(ini).run()));
}

TEST_F(ToolkitsTest, RootOptionSkipsTheConfiguredToolkit) {
    const std::string bundled = place("tells_root", "installed/bin");
    place("copies", "opt/bin");
    const std::string ini = "ZAV_HomeDirectory = " + (scratch_.path() / "opt").string() + "\n";
    EXPECT_EQ(bundled, toolkitOf(zav({"hw", "--format", "json", "--root", "/"}).locationFile(ini).run()));
}

TEST_F(ToolkitsTest, HidingOptionSkipsTheConfiguredToolkit) {
    const std::string bundled = place("copies", "installed/bin");
    place("fails", "opt/bin");
    const std::string ini = "ZAV_HomeDirectory = " + (scratch_.path() / "opt").string() + "\n";
    for (const char* const option : {"--sanitize", "--no-volatile", "--pretty"})
        EXPECT_EQ(bundled, toolkitOf(zav({"hw", "--format", "json", option}).locationFile(ini).run()));
}

TEST_F(ToolkitsTest, UnregisteredProductIsReportedOnlyWithAnInstalledToolkit) {
    place("copies", "installed/bin");
    EXPECT_EQ("", zav({"hw"}).locationFile(std::nullopt).run().err);
    place("copies", "opt/bin");
    const std::string ini = "ZAV_HomeDirectory = " + (scratch_.path() / "opt").string() + "\n";
    EXPECT_EQ("zav: Exploiter not correctly registered\n", zav({"hw"}).locationFile(ini).run().err);
}

TEST_F(ToolkitsTest, MissingScannerIsReportedWithAllDirectories) {
    const Ended ended = zav({"hw"}).locationFile(std::nullopt).run();
    const std::string installed = (scratch_.path() / "installed").string();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("zav: no hardware scanner 'quorvah' in " + installed + "/bin or " + installed +
                  "/libexec/zav/bin; use --toolkit to name its directory\n",
              ended.err);
}

TEST_F(ToolkitsTest, GroupsNeedNoScanner) {
    const Ended ended = zav({"groups"}).locationFile(std::nullopt).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
    EXPECT_TRUE(says(ended, " 4  OperatingSystem\n"));
    EXPECT_EQ(49, std::count(ended.out.begin(), ended.out.end(), '\n'));
}

TEST_F(ToolkitsTest, DoctorAcceptsABundledScanner) {
    const std::string bundled = place("copies", "installed/bin");
    const Ended ended = zav({"doctor"}).locationFile(std::nullopt).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
    EXPECT_TRUE(says(ended, "note     configuration: there is no /etc/zav/zav.ini")) << ended.out;
    EXPECT_TRUE(says(ended, "ok       toolkit directory: " + bundled + " (bundled with this command)\n"))
        << ended.out;
    EXPECT_TRUE(says(ended, "ok       hardware scanner: " + bundled + "/quorvah ran")) << ended.out;
    EXPECT_TRUE(says(ended, "note     software scanner: no software scanner 'quorvis' in ")) << ended.out;
}

TEST_F(ToolkitsTest, DoctorAcceptsAFullInstallation) {
    const std::string configured = place("copies", "opt/bin");
    addSoftwareScanner("answers", configured);
    const std::string ini =
        "ZAV_HomeDirectory = " + (scratch_.path() / "opt").string() + "\nZAV_Exploiters = other:zav\n";
    const Ended ended = zav({"doctor"}).locationFile(ini).run();
    EXPECT_EQ(0, ended.status);
    for (const std::string& line :
         {"ok       configuration: /etc/zav/zav.ini names " + configured + "\n",
          std::string("ok       registration: "), std::string("ok       temporary files: "),
          "ok       toolkit directory: " + configured + " (named by /etc/zav/zav.ini)\n",
          "ok       hardware scanner: " + configured, "ok       software scanner: " + configured})
        EXPECT_TRUE(says(ended, line)) << line << ended.out;
}

TEST_F(ToolkitsTest, DoctorReportsFaultyLocationFileLines) {
    place("copies", "installed/bin");
    const Ended ended = zav({"doctor"}).locationFile("# zav\nZAV_HomeDirectory=/opt/zav\n").run();
    EXPECT_EQ(0, ended.status);
    EXPECT_TRUE(says(
        ended,
        "note     configuration: /etc/zav/zav.ini: line 2 must begin with exactly 'ZAV_HomeDirectory ='\n"))
        << ended.out;
    EXPECT_TRUE(says(ended, "note     registration: 'zav' is not registered")) << ended.out;
}

TEST_F(ToolkitsTest, DoctorReportsASkippedConfiguredDirectory) {
    place("copies", "installed/bin");
    const Ended ended = zav({"doctor"}).locationFile("ZAV_HomeDirectory = /nope\n").run();
    EXPECT_EQ(0, ended.status);
    EXPECT_TRUE(says(ended, "; the configured /nope/bin has no usable 'quorvah'\n")) << ended.out;
}

TEST_F(ToolkitsTest, DoctorReportsAMissingScanner) {
    const Ended ended = zav({"doctor"}).locationFile(std::nullopt).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_TRUE(says(ended, "problem  toolkit directory: no hardware scanner 'quorvah' in ")) << ended.out;
}

TEST_F(ToolkitsTest, DoctorReportsScannersThatDoNotWork) {
    for (const char* name : {"fails", "crashes", "cut_off"}) {
        const Ended ended = zav({"doctor", "--toolkit", scanner(name)}).locationFile(std::nullopt).run();
        EXPECT_EQ(1, ended.status) << name;
        EXPECT_TRUE(says(ended, "problem  hardware scanner: ")) << ended.out;
    }
}

TEST_F(ToolkitsTest, DoctorReportsSoftwareScannersThatDoNotWork) {
    for (const char* name : {"crashes", "cut_off"}) {
        const std::string tools = place("copies", name);
        addSoftwareScanner(name, tools);
        const Ended ended = zav({"doctor", "--toolkit", tools}).locationFile(std::nullopt).run();
        EXPECT_EQ(1, ended.status) << name;
        EXPECT_TRUE(says(ended, "ok       hardware scanner: ")) << ended.out;
        EXPECT_TRUE(says(ended, "problem  software scanner: ")) << ended.out;
    }
}

TEST_F(ToolkitsTest, DoctorReportsAToolkitPathWithABlank) {
    const Ended ended =
        zav({"doctor", "--toolkit", place("copies", "my tools")}).locationFile(std::nullopt).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_TRUE(says(ended, "cannot start a scanner from a path with blanks")) << ended.out;
}

TEST_F(ToolkitsTest, DoctorReportsAMissingTemporaryDirectory) {
    const Ended ended =
        zav({"doctor"}).environment("TEMP", "/no/such/place").locationFile(std::nullopt).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_TRUE(says(ended, "problem  temporary files: no temporary directory could be made")) << ended.out;
}

TEST_F(ToolkitsTest, DoctorLeavesNoTemporaryFiles) {
    place("copies", "installed/bin");
    const auto temporary = scratch_.path() / "tmp";
    std::filesystem::create_directory(temporary);
    zav({"doctor"}).environment("TEMP", temporary.string()).locationFile(std::nullopt).run();
    EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

}  // namespace
}  // namespace zavtest
