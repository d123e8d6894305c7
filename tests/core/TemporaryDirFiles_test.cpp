// The files of a TemporaryDir, and its end.

#include "tests/core/TemporaryDirFixture.h"
#include "tests/support/Allocations.h"
#include "tests/support/Descriptors.h"
#include "tests/support/EnvironmentVariable.h"

namespace zav::test {
namespace {

namespace fs = std::filesystem;
using zavtest::Message;

class TemporaryDirFiles : public TemporaryDirTest {
  protected:
    static fs::path directoryOf(TemporaryDir& workspace) { return workspace.getBasePath(); }
    static fs::path newFile(TemporaryDir& workspace) {
        std::wstring path;
        EXPECT_EQ(workspace.getTmpFile(path, L"out_", L".xml"), 0);
        return path;
    }
    static void touch(const fs::path& path) { std::ofstream(path) << "x"; }
    Message dealocation() const { return message("TemporaryDir::~TemporaryDir()", "Dealocation()"); }
    Message deleting(const fs::path& path, const std::string& result) const {
        return message("TemporaryDir::deleteDirectory()",
                       "Deleting directory [" + path.string() + "] - " + result);
    }
};

TEST_F(TemporaryDirFiles, NameHoldsPrefixProcessRandomCharactersExtensionAndNumber) {
    const struct {
        const wchar_t* prefix;
        const wchar_t* extension;
        const char* prefixPattern;
        const char* extensionPattern;
    } cases[] = {{L"config", L".xml", "config", "\\.xml"},
                 {L"out_", nullptr, "out_", ""},
                 {nullptr, L".xml", "", "\\.xml"},
                 {nullptr, nullptr, "", ""},
                 {L"", L"", "", ""}};
    const auto workspace = makeInitialised();
    for (const auto& each : cases) {
        const std::string name =
            each.prefixPattern + processIds() + "[0-9A-Za-y]{6,10}" + each.extensionPattern + "_[345][0-9]";
        for (int i = 0; i < 50; ++i) {
            std::wstring path;
            ASSERT_EQ(workspace->getTmpFile(path, each.prefix, each.extension), 0);
            EXPECT_EQ(fs::path(path).parent_path(), directoryOf(*workspace));
            EXPECT_TRUE(matches(fs::path(path).filename().string(), name)) << fs::path(path);
            EXPECT_FALSE(fs::exists(path));
        }
    }
}

TEST_F(TemporaryDirFiles, NameIsLogged) {
    const auto workspace = makeInitialised();
    const fs::path path = newFile(*workspace);
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{
                  message("TemporaryDir::getTmpFile()", "Requesting tmpFile [" + path.string() + "]")}));
}

TEST_F(TemporaryDirFiles, FirstNumberIsDrawnFromTheGenerator) {
    const NoRandomness zeros;
    const auto workspace = makeInitialised();
    for (unsigned seed = 0; seed < 100; ++seed) {
        const int budget = seedBudget(seed);
        EXPECT_EQ(newFile(*workspace).filename(),
                  "out_" + processIds() + "000000.xml_" + std::to_string(budget));
    }
}

TEST_F(TemporaryDirFiles, SuccessiveNamesDiffer) {
    const auto workspace = makeInitialised();
    EXPECT_NE(newFile(*workspace), newFile(*workspace));
}

TEST_F(TemporaryDirFiles, TakenNamesArePassedOver) {
    const NoRandomness zeros;
    const auto workspace = makeInitialised();
    const auto name = [](int number) {
        return "out_" + processIds() + "000000.xml_" + std::to_string(number);
    };
    const int budget = seedBudget(4);
    touch(directoryOf(*workspace) / name(budget));
    fs::create_directory(directoryOf(*workspace) / name(budget - 1));
    EXPECT_EQ(newFile(*workspace).filename(), name(budget - 2));
    EXPECT_EQ(recorder_.messages.size(), 1U);
    fs::remove_all(directoryOf(*workspace) / name(budget));
    fs::remove_all(directoryOf(*workspace) / name(budget - 1));
}

TEST_F(TemporaryDirFiles, FailsUnloggedWhenEveryNameIsTaken) {
    const NoRandomness zeros;
    const auto workspace = makeInitialised();
    const auto path = [&](int number) {
        return directoryOf(*workspace) / ("out_" + processIds() + "000000.xml_" + std::to_string(number));
    };
    const int budget = seedBudget(4);
    for (int number = budget; number > 0; --number) touch(path(number));
    std::wstring handedOut = L"unchanged";
    EXPECT_EQ(workspace->getTmpFile(handedOut, L"out_", L".xml"), 6);
    EXPECT_EQ(handedOut, L"unchanged");
    EXPECT_TRUE(recorder_.messages.empty());

    seedBudget(4);
    fs::remove(path(1));
    EXPECT_EQ(newFile(*workspace), path(1));
    EXPECT_EQ(workspace->deleteFiles(true), 0);
    for (int number = budget; number > 1; --number) {
        EXPECT_TRUE(fs::remove(path(number))) << "a name that was not handed out";
    }
}

TEST_F(TemporaryDirFiles, UninitialisedWorkspaceReturnsNoNames) {
    const auto workspace = make();
    std::wstring path = L"unchanged";
    EXPECT_EQ(workspace->getTmpFile(path, L"out_", L".xml"), 6);
    EXPECT_EQ(path, L"unchanged");
    EXPECT_EQ(workspace->deleteFiles(true), 6);
    EXPECT_EQ(workspace->getBasePath(), nullptr);
}

TEST_F(TemporaryDirFiles, AllFilesAreDeletedAndTheWorkspaceGoesOn) {
    const auto workspace = makeInitialised();
    const fs::path first = newFile(*workspace);
    const fs::path second = newFile(*workspace);
    touch(first);
    touch(second);
    recorder_.messages.clear();
    EXPECT_EQ(workspace->deleteFiles(true), 0);
    EXPECT_TRUE(recorder_.messages.empty());
    EXPECT_FALSE(fs::exists(first));
    EXPECT_FALSE(fs::exists(second));
    const fs::path third = newFile(*workspace);
    touch(third);
    EXPECT_EQ(workspace->deleteFiles(false), 0);
    EXPECT_FALSE(fs::exists(third));
}

TEST_F(TemporaryDirFiles, DeletionPassesOverWhatWasNeverWrittenAndWhatIsNoFile) {
    const auto workspace = makeInitialised();
    newFile(*workspace);
    const fs::path directory = newFile(*workspace);
    fs::create_directory(directory);
    const fs::path last = newFile(*workspace);
    touch(last);
    EXPECT_EQ(workspace->deleteFiles(true), 0);
    EXPECT_FALSE(fs::exists(last));
    EXPECT_TRUE(fs::remove(directory));
}

TEST_F(TemporaryDirFiles, DeletedNamesAreForgotten) {
    const auto workspace = makeInitialised();
    const fs::path path = newFile(*workspace);
    EXPECT_EQ(workspace->deleteFiles(true), 0);
    touch(path);
    EXPECT_EQ(workspace->deleteFiles(true), 0);
    EXPECT_TRUE(fs::remove(path));
}

TEST_F(TemporaryDirFiles, WorkspaceNeedsNoLog) {
    TemporaryDir workspace(nullptr, wide(base_.path()).c_str());
    ASSERT_EQ(workspace.init(L"zav_"), 0);
    touch(newFile(workspace));
    EXPECT_EQ(workspace.deleteFiles(true), 0);
    EXPECT_TRUE(fs::is_empty(directoryOf(workspace)));
}

TEST_F(TemporaryDirFiles, DestructionRemovesFilesAndDirectory) {
    auto workspace = makeInitialised();
    const fs::path directory = directoryOf(*workspace);
    touch(newFile(*workspace));
    touch(newFile(*workspace));
    recorder_.messages.clear();
    workspace.reset();
    EXPECT_EQ(recorder_.messages, (std::vector<Message>{dealocation(), deleting(directory, "success")}));
    EXPECT_TRUE(fs::is_empty(base_.path()));
}

TEST_F(TemporaryDirFiles, DestructionKeepsForeignFiles) {
    auto workspace = makeInitialised();
    const fs::path directory = directoryOf(*workspace);
    touch(newFile(*workspace));
    touch(directory / "theirs");
    recorder_.messages.clear();
    workspace.reset();
    EXPECT_EQ(recorder_.messages, (std::vector<Message>{dealocation(), deleting(directory, "failed")}));
    EXPECT_EQ(zavtest::readAll(directory / "theirs"), "x");
    EXPECT_EQ(std::distance(fs::directory_iterator(directory), {}), 1);
}

TEST_F(TemporaryDirFiles, WorkspacesNest) {
    auto outer = makeInitialised();
    auto inner = std::make_unique<TemporaryDir>(&log_, outer->getBasePath());
    ASSERT_EQ(inner->init(L"quorvah"), 0);
    EXPECT_EQ(directoryOf(*inner).parent_path(), directoryOf(*outer));
    inner.reset();
    outer.reset();
    EXPECT_TRUE(fs::is_empty(base_.path()));
}

TEST_F(TemporaryDirFiles, OuterWorkspaceStaysWhereAnInnerOneWasNotRemoved) {
    auto outer = makeInitialised();
    const fs::path directory = directoryOf(*outer);
    TemporaryDir inner(nullptr, outer->getBasePath());
    ASSERT_EQ(inner.init(L"quorvah"), 0);
    recorder_.messages.clear();
    outer.reset();
    EXPECT_EQ(recorder_.messages, (std::vector<Message>{dealocation(), deleting(directory, "failed")}));
    EXPECT_TRUE(fs::is_directory(directoryOf(inner)));
}

TEST_F(TemporaryDirFiles, DeleteDirectoryIgnoresItsArgument) {
    auto workspace = makeInitialised();
    const fs::path directory = directoryOf(*workspace);
    const fs::path named = base_.path() / "named";
    fs::create_directory(named);
    workspace->deleteDirectory(wide(named));
    EXPECT_TRUE(fs::exists(named));
    EXPECT_FALSE(fs::exists(directory));
    workspace.reset();
    EXPECT_EQ(recorder_.messages, (std::vector<Message>{deleting(directory, "success"), dealocation(),
                                                        deleting(directory, "failed")}));
}

TEST_F(TemporaryDirFiles, NothingStaysOpenOrAllocated) {
    ZAVlog silent(1, nullptr, nullptr);
    const std::size_t descriptors = zavtest::openDescriptors();
    const long blocks = zavtest::liveBlocks();
    {
        TemporaryDir workspace(&silent, wide(base_.path()).c_str());
        EXPECT_EQ(zavtest::openDescriptors(), descriptors + 1);
        ASSERT_EQ(workspace.init(L"zav_"), 0);
        newFile(workspace);
    }
    EXPECT_EQ(zavtest::openDescriptors(), descriptors);
    EXPECT_EQ(zavtest::liveBlocks(), blocks);
}

TEST_F(TemporaryDirFiles, ClosingIsDoneOnce) {
    auto workspace = makeInitialised();
    const fs::path directory = directoryOf(*workspace);
    touch(newFile(*workspace));
    recorder_.messages.clear();
    EXPECT_EQ(workspace->close(), 0);
    EXPECT_TRUE(fs::is_empty(base_.path()));
    EXPECT_EQ(workspace->getBasePath(), nullptr);
    EXPECT_EQ(workspace->close(), 0);
    workspace.reset();
    EXPECT_EQ(recorder_.messages, (std::vector<Message>{dealocation(), deleting(directory, "success")}));
}

TEST_F(TemporaryDirFiles, ThrowingCallbackStopsNeitherClosingNorDestruction) {
    for (const bool closed : {false, true}) {
        bool throws = false;
        ZAVlog throwing(
            1,
            [](int, int, void* userData, const char*, const char*) {
                if (*static_cast<bool*>(userData)) throw 7;
            },
            &throws);
        {
            TemporaryDir workspace(&throwing, wide(base_.path()).c_str());
            ASSERT_EQ(workspace.init(L"zav_"), 0);
            touch(newFile(workspace));
            throws = true;
            if (closed) {
                EXPECT_EQ(workspace.close(), 5);
            }
        }
        EXPECT_TRUE(fs::is_empty(base_.path()));
    }
}

TEST_F(TemporaryDirFiles, OtherConstructorsMakeUnusableObjects) {
    const zavtest::EnvironmentVariable temp("TEMP", base_.path().string());
    TemporaryDir none;
    TemporaryDir onlyPath(wide(base_.path()).c_str());
    EXPECT_TRUE(recorder_.messages.empty());
    TemporaryDir onlyLog(&log_);
    EXPECT_EQ(recorder_.textsOf("TemporaryDir::TemporaryDir()"),
              std::vector<std::string>{"BasePath [" + base_.path().string() + "]"});
    EXPECT_EQ(recorder_.messages.back(), dealocation());
    for (TemporaryDir* const workspace : {&none, &onlyPath, &onlyLog}) {
        std::wstring path = L"unchanged";
        EXPECT_EQ(workspace->getTmpFile(path, nullptr, nullptr), 6);
        EXPECT_EQ(path, L"unchanged");
        EXPECT_EQ(workspace->deleteFiles(true), 6);
        EXPECT_EQ(workspace->getBasePath(), nullptr);
    }
    EXPECT_TRUE(fs::is_empty(base_.path()));
}

}  // namespace
}  // namespace zav::test
