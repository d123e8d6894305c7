// ZAV_init and ZAV_free: return codes, side effects, messages and released resources.
#include "core/ZAVCtx.h"

#include <gtest/gtest.h>

#include <cstring>

#include "kest/Text.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/ZavIni.h"

namespace zav::test {
namespace {

namespace fs = std::filesystem;
using zavtest::LogRecorder;
using zavtest::Message;
using zavtest::ZavIni;

const char* const kRegistered = "ZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = other:product\n";

class ZAVCtxTest : public testing::Test {
  protected:
    ~ZAVCtxTest() override {
        if (handle_ != nullptr) ZAV_free(handle_);
    }

    int init(const wchar_t* zavDir = nullptr, const char* exploiter = "product") {
        return ZAV_init(exploiter, LogRecorder::callback, &recorder_, tempDir_.c_str(), zavDir, &handle_);
    }
    int release() { return ZAV_free(std::exchange(handle_, nullptr)); }

    std::string directory() const { return kest::narrow(handle_->tempDir->getBasePath()); }

    // The texts of the messages at level 0.
    std::vector<std::string> refusals() const {
        std::vector<std::string> texts;
        for (const Message& message : recorder_.messages) {
            if (message.level == 0) texts.push_back(message.text);
        }
        return texts;
    }

    std::string noWorkspace() const {
        return "Cannot make a directory in [" + kest::narrow(tempDir_) +
               "]: ENOENT (no such file or directory)";
    }

    zavtest::ScratchDir temp_;
    std::wstring tempDir_ = kest::widen(temp_.path().string());
    LogRecorder recorder_;
    ZAVCtx* handle_ = nullptr;
};

const std::string kNotRegistered = "Exploiter not correctly registered";
const std::string kNotInstalled = "ZAV not installed, please specify a directory";

TEST_F(ZAVCtxTest, NullNameIsRefusedInSilence) {
    EXPECT_EQ(init(nullptr, nullptr), 2);
    EXPECT_EQ(handle_, nullptr);
    EXPECT_TRUE(recorder_.messages.empty());
    EXPECT_TRUE(fs::is_empty(temp_.path()));
    EXPECT_EQ(ZAV_init(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 2);
}

TEST_F(ZAVCtxTest, NullHandleArgumentIsRefusedSilently) {
    EXPECT_EQ(ZAV_init("product", LogRecorder::callback, &recorder_, tempDir_.c_str(), nullptr, nullptr), 3);
    EXPECT_TRUE(recorder_.messages.empty());
    EXPECT_TRUE(fs::is_empty(temp_.path()));
}

TEST_F(ZAVCtxTest, WithNothingInstalledEveryStepIsLoggedInOrder) {
    ASSERT_EQ(init(), 0);
    const std::string temp = temp_.path().string();
    const std::string location = "ZAVLocation::getSystemLocation";
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{
                  {2, 1, "ZAV_init",
                   "init OK, Exploiter: [product] Version: [11/03/03zav_2.7.0.0006] ZAV DIR[(null)]"},
                  {2, 1, "TemporaryDir::TemporaryDir()", "BasePath [" + temp + "]"},
                  {2, 1, "TemporaryDir::init()", "initialization"},
                  {2, 1, "TemporaryDir::init()", "Creating directory [" + directory() + "] success"},
                  {2, 1, "TemporaryDir::init()", "initialization successful [" + directory() + "]"},
                  {2, 1, location + "()", "Checking ZAV location.."},
                  {2, 1, location + "()", "Opening a file [/etc/zav/zav.ini]"},
                  {0, 1, location, "Can't open file [/etc/zav/zav.ini]"},
                  {2, 1, "ZAVLocation::ZAVLocation()", "ZAV location []"},
                  {0, 1, "ZAV_init", kNotRegistered},
                  {0, 1, "ZAV_init", kNotInstalled},
              }));
    EXPECT_EQ(handle_->homeDir, L"");
    EXPECT_STREQ(handle_->exploiterName.get(), "product");
}

TEST_F(ZAVCtxTest, FirstMessageShowsTheGivenDirectoryAsItWasGiven) {
    ASSERT_EQ(init(L"/usr//zav/"), 0);
    EXPECT_EQ(
        recorder_.messages.front(),
        (Message{2, 1, "ZAV_init",
                 "init OK, Exploiter: [product] Version: [11/03/03zav_2.7.0.0006] ZAV DIR[/usr//zav/]"}));
    EXPECT_EQ(handle_->homeDir, L"/usr/zav/");
}

TEST_F(ZAVCtxTest, DirectoryIsTheGivenOneOrTheFiles) {
    const ZavIni ini(kRegistered);
    ASSERT_EQ(init(), 0);
    EXPECT_EQ(handle_->homeDir, L"/opt/zav/bin");
    ASSERT_EQ(release(), 0);
    ASSERT_EQ(init(L"/usr/zav"), 0);
    EXPECT_EQ(handle_->homeDir, L"/usr/zav");
}

TEST_F(ZAVCtxTest, MessagesReportWhatIsMissing) {
    const struct {
        const char* file;
        const wchar_t* zavDir;
        std::vector<std::string> expected;
    } cases[] = {
        {kRegistered, nullptr, {}},
        {kRegistered, L"/opt/zav/bin", {}},
        {"ZAV_HomeDirectory = /opt/zav\n", nullptr, {kNotRegistered}},
        {"ZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = Product\n", nullptr, {kNotRegistered}},
        {"ZAV_Exploiters = product\n", nullptr, {kNotInstalled}},
        {"ZAV_Exploiters = product\n", L"", {kNotInstalled}},
        {"ZAV_Exploiters = product\n", L"/usr/zav", {}},
        {"", nullptr, {kNotRegistered, kNotInstalled}},
        {"", L"/usr/zav", {kNotRegistered}},
    };
    for (const auto& each : cases) {
        const ZavIni ini(each.file);
        recorder_.messages.clear();
        ASSERT_EQ(init(each.zavDir), 0);
        EXPECT_EQ(refusals(), each.expected) << each.file;
        EXPECT_EQ(recorder_.textsOf("ZAV_init").size(), 1 + each.expected.size()) << each.file;
        ASSERT_EQ(release(), 0);
    }
}

TEST_F(ZAVCtxTest, WorkspaceThatCannotBeMadeFailsTheCallAfterTheLookup) {
    const ZavIni ini(kRegistered);
    tempDir_ += L"/missing";
    EXPECT_EQ(init(), 6);
    EXPECT_EQ(handle_, nullptr);
    const std::vector<std::string> workspace = recorder_.textsOf("TemporaryDir::init()");
    ASSERT_GE(workspace.size(), 32U);
    EXPECT_TRUE(workspace[1].ends_with("] failed"));
    EXPECT_TRUE(workspace.back().starts_with("initialization failed ["));
    EXPECT_EQ(recorder_.textsOf("ZAVLocation::ZAVLocation()"),
              std::vector<std::string>{"ZAV location [/opt/zav/bin]"});
    EXPECT_EQ(recorder_.messages.back(), (Message{0, 1, "ZAV_init", noWorkspace()}));
    EXPECT_TRUE(recorder_.textsOf("TemporaryDir::~TemporaryDir()").empty());
    EXPECT_EQ(refusals(), std::vector<std::string>{noWorkspace()});
}

TEST_F(ZAVCtxTest, NoticesStandAlsoWhereTheWorkspaceFails) {
    tempDir_ += L"/missing";
    EXPECT_EQ(init(), 6);
    EXPECT_EQ(refusals(), (std::vector<std::string>{"Can't open file [/etc/zav/zav.ini]", kNotRegistered,
                                                    kNotInstalled, noWorkspace()}));
}

TEST_F(ZAVCtxTest, WithoutAGivenDirectoryTheWorkspaceIsBelowTheSystems) {
    const zavtest::EnvironmentVariable temp("TEMP", temp_.path().string());
    ASSERT_EQ(ZAV_init("product", nullptr, nullptr, nullptr, nullptr, &handle_), 0);
    EXPECT_EQ(fs::path(directory()).parent_path(), temp_.path());
    EXPECT_TRUE(fs::path(directory()).filename().string().starts_with("zav_"));
}

TEST_F(ZAVCtxTest, NameIsCopied) {
    char name[] = "product";
    ASSERT_EQ(init(nullptr, name), 0);
    std::strcpy(name, "changed");
    recorder_.messages.clear();
    EXPECT_EQ(release(), 0);
    EXPECT_EQ(recorder_.messages.front().text, "Deinit for exploiter: [product]");
}

TEST_F(ZAVCtxTest, EmptyNameIsAName) {
    const ZavIni ini("ZAV_Exploiters = :a\n");
    ASSERT_EQ(init(L"/usr/zav", ""), 0);
    EXPECT_EQ(refusals(), std::vector<std::string>{kNotRegistered});
}

TEST_F(ZAVCtxTest, SilentHandleWorks) {
    ASSERT_EQ(ZAV_init("product", nullptr, nullptr, tempDir_.c_str(), L"/usr/zav", &handle_), 0);
    EXPECT_EQ(handle_->homeDir, L"/usr/zav");
    EXPECT_EQ(release(), 0);
    EXPECT_TRUE(fs::is_empty(temp_.path()));
}

TEST_F(ZAVCtxTest, HandlesAreIndependent) {
    ASSERT_EQ(init(), 0);
    ZAVCtx* other = nullptr;
    LogRecorder others;
    ASSERT_EQ(ZAV_init("other", LogRecorder::callback, &others, tempDir_.c_str(), L"/usr/zav", &other), 0);
    EXPECT_STRNE(kest::narrow(other->tempDir->getBasePath()).c_str(), directory().c_str());
    recorder_.messages.clear();
    EXPECT_EQ(ZAV_free(other), 0);
    EXPECT_TRUE(recorder_.messages.empty());
    EXPECT_TRUE(fs::is_directory(directory()));
    EXPECT_EQ(handle_->homeDir, L"");
}

TEST_F(ZAVCtxTest, NullHandleIsRefused) {
    EXPECT_EQ(ZAV_free(nullptr), 3);
}

TEST_F(ZAVCtxTest, ReleaseIsLoggedInOrder) {
    ASSERT_EQ(init(), 0);
    const std::string made = directory();
    recorder_.messages.clear();
    EXPECT_EQ(release(), 0);
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{
                  {2, 1, "ZAV_free", "Deinit for exploiter: [product]"},
                  {2, 1, "TemporaryDir::~TemporaryDir()", "Dealocation()"},
                  {2, 1, "TemporaryDir::deleteDirectory()", "Deleting directory [" + made + "] - success"},
              }));
}

TEST_F(ZAVCtxTest, ReleaseDeletesEveryNamedFile) {
    ASSERT_EQ(init(), 0);
    for (int i = 0; i < 5; ++i) {
        std::wstring path;
        ASSERT_EQ(handle_->tempDir->getTmpFile(path, L"out_", L".xml"), 0);
        if (i != 2) std::ofstream(fs::path(path)) << "x";
    }
    EXPECT_EQ(release(), 0);
    EXPECT_TRUE(fs::is_empty(temp_.path()));
}

TEST_F(ZAVCtxTest, ReleaseKeepsForeignFiles) {
    ASSERT_EQ(init(), 0);
    const fs::path theirs = fs::path(directory()) / "theirs";
    std::ofstream(theirs) << "x";
    const std::string made = directory();
    EXPECT_EQ(release(), 0);
    EXPECT_EQ(recorder_.messages.back().text, "Deleting directory [" + made + "] - failed");
    EXPECT_TRUE(fs::exists(theirs));
}

std::unique_ptr<ZAVCtx> handMade(LogRecorder& recorder) {
    auto handle = std::make_unique<ZAVCtx>();
    handle->exploiterName.reset(strdup("product"));
    handle->log = std::make_unique<ZAVlog>(1, LogRecorder::callback, &recorder);
    return handle;
}

TEST_F(ZAVCtxTest, HandleWithoutANameLosesOnlyItsLogger) {
    const auto handle = handMade(recorder_);
    handle->exploiterName.reset();
    handle->homeDir = L"/usr/zav";
    handle->tempDir = std::make_unique<TemporaryDir>(nullptr, tempDir_.c_str());
    ASSERT_EQ(handle->tempDir->init(L"zav_"), 0);
    EXPECT_EQ(ZAV_free(handle.get()), 2);
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{{2, 1, "ZAV_free", "Deinit for exploiter: [(null)]"}}));
    EXPECT_EQ(handle->log, nullptr);
    EXPECT_EQ(handle->homeDir, L"/usr/zav");
    ASSERT_NE(handle->tempDir, nullptr);
    EXPECT_TRUE(fs::is_directory(handle->tempDir->getBasePath()));
}

TEST_F(ZAVCtxTest, HandleWhoseWorkspaceWasNeverMadeIsEmptiedButKept) {
    const auto handle = handMade(recorder_);
    handle->homeDir = L"/usr/zav";
    handle->tempDir = std::make_unique<TemporaryDir>(handle->log.get(), tempDir_.c_str());
    recorder_.messages.clear();
    EXPECT_EQ(ZAV_free(handle.get()), 6);
    EXPECT_EQ(recorder_.messages, (std::vector<Message>{
                                      {2, 1, "ZAV_free", "Deinit for exploiter: [product]"},
                                      {2, 1, "TemporaryDir::~TemporaryDir()", "Dealocation()"},
                                  }));
    EXPECT_EQ(handle->exploiterName, nullptr);
    EXPECT_EQ(handle->tempDir, nullptr);
    EXPECT_EQ(handle->log, nullptr);
    EXPECT_EQ(handle->homeDir, L"/usr/zav");
}

TEST_F(ZAVCtxTest, HandleWithoutAWorkspaceIsReleased) {
    EXPECT_EQ(ZAV_free(handMade(recorder_).release()), 0);
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{{2, 1, "ZAV_free", "Deinit for exploiter: [product]"}}));
}

}  // namespace
}  // namespace zav::test
