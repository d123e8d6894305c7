// How the scanner is started: path, arguments and environment.
#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>

#include "kest/Descriptor.h"
#include "tests/hw/Inventory.h"
#include "tests/support/EnvironmentVariable.h"

namespace hwtest {
namespace {

using Texts = std::vector<std::string>;

// The lines that the scanner of an inventory prints.
Texts printed(Inventory& inventory) {
    inventory.takeMessages();
    inventory.run();
    Texts lines;
    const std::string before = "STDOUT data: [";
    for (const std::string& text : inventory.takeTextsOf("ZAV_hw_run")) {
        if (text.find(before) == 0)
            lines.push_back(text.substr(before.size(), text.size() - before.size() - 1));
    }
    return lines;
}

std::string loggedCommand(Inventory& inventory) {
    const std::string before = "Executing ZAV [";
    for (const std::string& text : inventory.takeTextsOf("ZAV_hw_run")) {
        if (text.find(before) == 0) return text.substr(before.size(), text.size() - before.size() - 1);
    }
    return {};
}

class DirectoryTest : public testing::TestWithParam<const char*>, private zavtest::NothingLeft {};

TEST_P(DirectoryTest, MayHoldAnyCharacterThatIsNoBlank) {
    Inventory inventory(GetParam());
    inventory.scannerIs("ShowArguments");
    const Texts arguments = printed(inventory);
    ASSERT_EQ(arguments.size(), 5U);
    EXPECT_EQ(arguments[0], inventory.scanner());
    EXPECT_EQ(arguments[1], "-c");
    EXPECT_EQ(arguments[3], "-o");
}

INSTANTIATE_TEST_SUITE_P(Names, DirectoryTest,
                         testing::Values("a;id", "$(id)", "`id`", "a&b|c>d<e", "*?[a]", "~", "$HOME", "a'b",
                                         "a\\b", "#a", "!a"));

TEST(ScannerLaunch, TheDirectoryOfTheCommandIsNotQuoted) {
    const zavtest::NothingLeft nothingLeft;
    Inventory inventory("with blank");
    inventory.scannerIs("ShowArguments");
    EXPECT_EQ(inventory.run(), 103);
    EXPECT_EQ(loggedCommand(inventory).find(inventory.scanner().string() + " -c \""), 0U);

    // The part before the blank is taken as the program.
    const auto program = inventory.path().parent_path() / "with";
    std::filesystem::copy_file(inventory.scanner(), program);
    const Texts arguments = printed(inventory);
    ASSERT_EQ(arguments.size(), 6U);
    EXPECT_EQ(arguments[0], program);
    EXPECT_EQ(arguments[1], "blank/quorvah");
    EXPECT_EQ(arguments[2], "-c");
}

class TemporaryDirectoryTest : public testing::TestWithParam<const char*>, private zavtest::NothingLeft {};

TEST_P(TemporaryDirectoryTest, MayHoldAnyCharacter) {
    const Toolkit toolkit;
    const zavtest::ScratchDir scratch;
    const auto temp = scratch.path() / GetParam();
    std::filesystem::create_directory(temp);
    toolkit.scannerWrites("<QEL/>");
    ZAVCtx* handle = nullptr;
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(ZAV_init("tests", nullptr, nullptr, temp.wstring().c_str(), toolkit.path().wstring().c_str(),
                       &handle),
              0);
    ASSERT_EQ(ZAV_hw_init(handle, nullptr, nullptr, &context), 0);
    EXPECT_EQ(ZAV_hw_run(context), 0);
    EXPECT_EQ(ZAV_hw_free(context), 0);
    EXPECT_EQ(ZAV_free(handle), 0);
    EXPECT_TRUE(std::filesystem::is_empty(temp));
}

INSTANTIATE_TEST_SUITE_P(Names, TemporaryDirectoryTest,
                         testing::Values("temp  with blanks;$(x)", "\"", "a\"b", "a\" -o \"b", "-o", "a\\\"b",
                                         " "));

TEST(ScannerLaunch, ADirectoryWithASlashAtItsEndKeepsBothSlashes) {
    Inventory inventory("toolkit/");
    inventory.scannerIs("ShowArguments");
    const Texts arguments = printed(inventory);
    ASSERT_EQ(arguments.size(), 5U);
    EXPECT_EQ(arguments[0], inventory.path().string() + "/quorvah");
    EXPECT_NE(arguments[0].find("//quorvah"), std::string::npos);
}

TEST(ScannerLaunch, TheSearchForTheProgramDoesNotUseThePath) {
    const zavtest::NothingLeft nothingLeft;
    const Toolkit elsewhere;
    elsewhere.scannerWrites("<QEL/>");
    const zavtest::EnvironmentVariable path("PATH", elsewhere.path().string());
    Inventory inventory;
    EXPECT_EQ(inventory.run(), 103);
}

Texts searchPathsOf(Inventory& inventory) {
    inventory.scannerIs("ShowEnvironment");
    Texts entries;
    for (const std::string& entry : printed(inventory)) {
        if (entry.find("DYLD_LIBRARY_PATH=") == 0) entries.push_back(entry);
    }
    return entries;
}

TEST(ScannerLaunch, TheToolkitsDirectoryIsTheLibrarySearchPath) {
    const zavtest::EnvironmentVariable none("DYLD_LIBRARY_PATH", std::nullopt);
    Inventory inventory;
    EXPECT_EQ(searchPathsOf(inventory), Texts{"DYLD_LIBRARY_PATH=" + inventory.path().string()});
}

TEST(ScannerLaunch, TheToolkitsDirectoryStandsBeforeTheHostsSearchPath) {
    const zavtest::EnvironmentVariable set("DYLD_LIBRARY_PATH", "/usr/lib:/lib");
    Inventory inventory;
    EXPECT_EQ(searchPathsOf(inventory),
              Texts{"DYLD_LIBRARY_PATH=" + inventory.path().string() + ":/usr/lib:/lib"});
}

TEST(ScannerLaunch, TheRestOfTheEnvironmentIsTheHosts) {
    const zavtest::EnvironmentVariable set("ZAV_TEST_MARK", "with blanks = and \"quotes\"");
    Inventory inventory;
    inventory.scannerIs("ShowEnvironment");
    const Texts entries = printed(inventory);
    EXPECT_EQ(std::count(entries.begin(), entries.end(), "ZAV_TEST_MARK=with blanks = and \"quotes\""), 1);
}

// This includes descriptors that the host has left inheritable.
TEST(ScannerLaunch, TheScannerHasNoDescriptorOfTheHost) {
    const zavtest::NothingLeft nothingLeft;
    constexpr rlim_t wanted = 4000;
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit raised = {std::min<rlim_t>(std::max(before.rlim_cur, wanted + 100), before.rlim_max),
                           before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &raised), 0);
    std::vector<kest::Descriptor> careless;
    while (careless.size() < wanted) {
        careless.emplace_back(open("/dev/null", O_RDONLY));
        ASSERT_TRUE(careless.back().isOpen());
    }
    Inventory inventory;
    inventory.scannerIs("ShowDescriptors");
    EXPECT_EQ(printed(inventory), (Texts{"0", "1", "2"}));
    careless.clear();
    setrlimit(RLIMIT_NOFILE, &before);
}

// Starting a scanner must not need memory in proportion to the host's.
TEST(ScannerLaunch, AHostWithMuchMemoryCanScan) {
    const std::string resident(std::size_t{512} << 20, 'x');
    Inventory inventory;
    inventory.scannerWrites("<QEL><Memory/></QEL>");
    ASSERT_EQ(inventory.run(), 0);
    EXPECT_EQ(inventory.instances(3), 1);
    EXPECT_EQ(resident.back(), 'x');
}

TEST(ScannerLaunch, AHostWithoutFreeDescriptorsIsRefusedAndRecovers) {
    Inventory inventory;
    inventory.scannerWrites("<QEL><Memory/></QEL>");
    const zavtest::NothingLeft nothingLeft;
    std::vector<kest::Descriptor> all;
    for (kest::Descriptor next(dup(0)); next.isOpen(); next = kest::Descriptor(dup(0))) {
        all.push_back(std::move(next));
    }
    EXPECT_EQ(inventory.run(), 102);
    // One is enough for the configuration file but not for a pipe.
    all.pop_back();
    EXPECT_EQ(inventory.run(), 103);
    all.clear();
    EXPECT_EQ(inventory.run(), 0);
    EXPECT_EQ(inventory.instances(3), 1);
}

}  // namespace
}  // namespace hwtest
