// How TemporaryDir makes its directory.
#include <sys/stat.h>

#include <ctime>
#include <functional>

#include "tests/core/TemporaryDirFixture.h"

namespace zav::test {
namespace {

using zavtest::Message;

class TemporaryDirInit : public TemporaryDirTest {
  protected:
    // The name that is tried with this number when nothing is random.
    std::string tried(int number) const {
        return (base_.path() / ("zav_" + processIds() + "000000_" + std::to_string(number))).string();
    }
    Message creating(const std::string& path, const std::string& result) const {
        return message(kInitFunction, "Creating directory [" + path + "] " + result);
    }
    std::vector<Message> failedMessages(const std::vector<std::string>& paths) const {
        std::vector<Message> messages = {message(kInitFunction, "initialization")};
        for (const std::string& path : paths) messages.push_back(creating(path, "failed"));
        messages.push_back(message(kInitFunction, "initialization failed [" + paths.back() + "]"));
        return messages;
    }
};

class Umask {
  public:
    explicit Umask(mode_t mask) : before_(::umask(mask)) {}
    ~Umask() { ::umask(before_); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

  private:
    mode_t before_;
};

TEST_F(TemporaryDirInit, DirectoryIsNamedByPrefixProcessRandomCharactersAndNumber) {
    const struct {
        const wchar_t* prefix;
        const char* text;
    } cases[] = {
        {L"zav_", "zav_"}, {L"quorvah", "quorvah"}, {L"quorvis", "quorvis"}, {L"", ""}, {nullptr, ""}};
    for (const auto& each : cases) {
        const std::string name(each.text + processIds() + "[0-9A-Za-y]{6,10}_(3[0-9]|4[0-9]|5[0-9])");
        for (int i = 0; i < 50; ++i) {
            const auto workspace = make();
            ASSERT_EQ(workspace->init(each.prefix), 0);
            const std::filesystem::path path(workspace->getBasePath());
            EXPECT_EQ(path.parent_path(), base_.path());
            EXPECT_TRUE(matches(path.filename().string(), name)) << path;
            EXPECT_TRUE(std::filesystem::is_directory(path));
        }
    }
}

TEST_F(TemporaryDirInit, RandomPartHasSixToTenCharacters) {
    for (std::uint32_t drawn = 0; drawn < 10; ++drawn) {
        const RandomValues random(std::vector<std::uint32_t>(20, drawn));
        const auto workspace = make();
        ASSERT_EQ(workspace->init(L"zav_"), 0);
        const std::string name =
            "zav_" + processIds() + std::string(drawn % 5 + 6, static_cast<char>('0' + drawn)) + "_[0-9]{2}";
        EXPECT_TRUE(matches(std::filesystem::path(workspace->getBasePath()).filename().string(), name));
    }
}

TEST_F(TemporaryDirInit, PathHoldsNoDoubleSlash) {
    TemporaryDir workspace(&log_, (wide(base_.path()) + L"//").c_str());
    EXPECT_EQ(workspace.parentPath(), wide(base_.path()) + L"/");
    ASSERT_EQ(workspace.init(L"//zav_"), 0);
    EXPECT_EQ(std::wstring(workspace.getBasePath()).find(L"//"), std::wstring::npos);
}

TEST_F(TemporaryDirInit, FirstNumberIsDrawnBeforeTheGeneratorIsSeeded) {
    const NoRandomness zeros;
    for (unsigned seed = 0; seed < 100; ++seed) {
        const int budget = seedBudget(seed);
        EXPECT_GE(budget, 30);
        EXPECT_LE(budget, 59);
        const auto workspace = make();
        ASSERT_EQ(workspace->init(L"zav_"), 0);
        EXPECT_EQ(workspace->WStringToString(workspace->getBasePath()), tried(budget));
    }
}

TEST_F(TemporaryDirInit, EachCallSeedsTheGeneratorWithTheTime) {
    const auto workspace = make();
    const std::time_t before = std::time(nullptr);
    std::srand(1);
    ASSERT_EQ(workspace->init(L"zav_"), 0);
    const int next = std::rand();
    const std::time_t after = std::time(nullptr);
    bool seeded = false;
    for (std::time_t time = before; time <= after; ++time) {
        std::srand(static_cast<unsigned>(time));
        seeded = seeded || std::rand() == next;
    }
    EXPECT_TRUE(seeded);
}

TEST_F(TemporaryDirInit, DirectoryHasOwnerPermissionsOnlyForAnyUmask) {
    for (const mode_t mask : {0U, 022U, 077U, 0777U}) {
        const Umask umask(mask);
        const auto workspace = make();
        ASSERT_EQ(workspace->init(L"zav_"), 0);
        struct stat status;
        ASSERT_EQ(stat(workspace->WStringToString(workspace->getBasePath()).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode, S_IFDIR | S_IRWXU) << mask;
    }
}

TEST_F(TemporaryDirInit, SuccessIsLoggedInOrder) {
    const NoRandomness zeros;
    const auto workspace = make();
    recorder_.messages.clear();
    const int budget = seedBudget(3);
    EXPECT_EQ(workspace->init(L"zav_"), 0);
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{
                  message(kInitFunction, "initialization"),
                  creating(tried(budget), "success"),
                  message(kInitFunction, "initialization successful [" + tried(budget) + "]"),
              }));
    EXPECT_EQ(workspace->WStringToString(workspace->getBasePath()), tried(budget));
}

TEST_F(TemporaryDirInit, NextNameIsTriedIfTheNameIsTaken) {
    namespace fs = std::filesystem;
    const std::function<void(const fs::path&)> obstacles[] = {
        [](const fs::path& path) { fs::create_directory(path); },
        [](const fs::path& path) { std::ofstream(path) << "x"; },
        [](const fs::path& path) { fs::create_directory_symlink("/tmp", path); },
        [](const fs::path& path) { fs::create_symlink("/nowhere/at/all", path); },
    };
    const NoRandomness zeros;
    for (const auto& obstruct : obstacles) {
        const auto workspace = make();
        const int budget = seedBudget(7);
        obstruct(tried(budget));
        recorder_.messages.clear();
        EXPECT_EQ(workspace->init(L"zav_"), 0);
        EXPECT_EQ(recorder_.messages,
                  (std::vector<Message>{
                      message(kInitFunction, "initialization"),
                      creating(tried(budget), "failed"),
                      creating(tried(budget - 1), "success"),
                      message(kInitFunction, "initialization successful [" + tried(budget - 1) + "]"),
                  }));
        fs::remove(tried(budget));
    }
    EXPECT_FALSE(fs::exists("/nowhere"));
}

TEST_F(TemporaryDirInit, LastNumberTriedIsOne) {
    const NoRandomness zeros;
    const auto workspace = make();
    const int budget = seedBudget(11);
    for (int number = budget; number > 1; --number) base_.write(tried(number), "");
    EXPECT_EQ(workspace->init(L"zav_"), 0);
    EXPECT_EQ(workspace->WStringToString(workspace->getBasePath()), tried(1));
}

TEST_F(TemporaryDirInit, FailsWhenEveryNameIsTaken) {
    const NoRandomness zeros;
    auto workspace = make();
    const int budget = seedBudget(11);
    std::vector<std::string> paths;
    for (int number = budget; number > 0; --number) paths.push_back(base_.write(tried(number), "mine"));
    recorder_.messages.clear();
    EXPECT_EQ(workspace->init(L"zav_"), 6);
    EXPECT_EQ(recorder_.messages, failedMessages(paths));
    workspace.reset();
    for (const std::string& path : paths) EXPECT_EQ(zavtest::readAll(path), "mine");
}

TEST_F(TemporaryDirInit, FailsWhereNoDirectoryCanBeMade) {
    const std::string bases[] = {
        (base_.path() / "missing").string(),
        base_.write("file", "").string(),
        (base_.path() / std::string(300, 'n')).string(),
        "/proc",
    };
    const NoRandomness zeros;
    for (const std::string& base : bases) {
        TemporaryDir workspace(&log_, kest::widen(base).c_str());
        recorder_.messages.clear();
        const int budget = seedBudget(2);
        std::vector<std::string> paths;
        for (int number = budget; number > 0; --number) {
            paths.push_back(base + "/zav_" + processIds() + "000000_" + std::to_string(number));
        }
        EXPECT_EQ(workspace.init(L"zav_"), 6);
        EXPECT_EQ(recorder_.messages, failedMessages(paths));
    }
}

TEST_F(TemporaryDirInit, FailedWorkspaceReturnsNoNamesAndRemovesNothing) {
    auto workspace = std::make_unique<TemporaryDir>(&log_, wide(base_.path() / "missing").c_str());
    EXPECT_EQ(workspace->getBasePath(), nullptr);
    EXPECT_EQ(workspace->init(L"zav_"), 6);
    EXPECT_EQ(workspace->getBasePath(), nullptr);
    recorder_.messages.clear();
    std::wstring path = L"unchanged";
    EXPECT_EQ(workspace->getTmpFile(path, L"out_", L".xml"), 6);
    EXPECT_EQ(path, L"unchanged");
    EXPECT_EQ(workspace->deleteFiles(true), 6);
    EXPECT_TRUE(recorder_.messages.empty());
    workspace.reset();
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{message("TemporaryDir::~TemporaryDir()", "Dealocation()")}));
}

TEST_F(TemporaryDirInit, WorkspaceNeedsNoLog) {
    TemporaryDir workspace(nullptr, wide(base_.path()).c_str());
    EXPECT_EQ(workspace.init(L"zav_"), 0);
    TemporaryDir failing(nullptr, L"/missing/altogether");
    EXPECT_EQ(failing.init(L"zav_"), 6);
}

TEST_F(TemporaryDirInit, PathsAreNarrowedToTheirLowBytes) {
    const std::filesystem::path directory = base_.path() / "d\xE4";
    std::filesystem::create_directory(directory);
    TemporaryDir workspace(&log_, (wide(base_.path()) + L"/d\x1E4").c_str());
    EXPECT_EQ(workspace.init(L"zav_"), 0);
    EXPECT_FALSE(std::filesystem::is_empty(directory));
}

}  // namespace
}  // namespace zav::test
