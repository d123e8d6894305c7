// The lifecycle of a hardware context and its options.
#include "hw/ZAVHwCtx.h"

#include <sys/stat.h>

#include "kest/Text.h"
#include "tests/hw/Inventory.h"

namespace hwtest {
namespace {

using zavtest::LogRecorder;
using zavtest::Message;

std::string narrow(const std::wstring& text) {
    return kest::narrow(text);
}

// The only entry of a directory.
std::filesystem::path onlyEntryOf(const std::filesystem::path& directory) {
    const std::filesystem::directory_iterator entries(directory);
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
    return std::filesystem::directory_iterator(directory)->path();
}

// A library handle without a context.
class HwInitTest : public testing::Test, private zavtest::NothingLeft {
  protected:
    HwInitTest() {
        EXPECT_EQ(ZAV_init("tests", nullptr, nullptr, temp().wstring().c_str(), L"/opt//zav/bin", &handle_),
                  0);
    }
    ~HwInitTest() override {
        EXPECT_EQ(ZAV_free(handle_), 0);
        EXPECT_TRUE(std::filesystem::is_empty(temp()));
    }

    const std::filesystem::path& temp() const { return temp_.path(); }
    std::string handleDirectory() const { return narrow(handle_->tempDir->getBasePath()); }
    int init(ZAVHwCtx** context) { return ZAV_hw_init(handle_, LogRecorder::callback, &log_, context); }

    ZAVCtx* handle_ = nullptr;
    LogRecorder log_;

  private:
    zavtest::ScratchDir temp_;
};

TEST_F(HwInitTest, RefusesANullLibraryFirstAndKeepsTheOutput) {
    auto* const before = reinterpret_cast<ZAVHwCtx*>(this);
    ZAVHwCtx* context = before;
    EXPECT_EQ(ZAV_hw_init(nullptr, LogRecorder::callback, &log_, &context), 3);
    EXPECT_EQ(context, before);
    EXPECT_EQ(ZAV_hw_init(nullptr, nullptr, nullptr, nullptr), 3);
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(HwInitTest, RefusesANullContextNext) {
    EXPECT_EQ(init(nullptr), 109);
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(HwInitTest, ANewContextHasTheHandlesSettingsAndNoResults) {
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    EXPECT_EQ(context->library, handle_);
    EXPECT_EQ(context->installDir, L"/opt/zav/bin");
    EXPECT_EQ(context->returnCode, -1);
    EXPECT_EQ(context->groupEnabled.size(), 52U);
    for (int id = 0; id <= 51; ++id) {
        EXPECT_EQ(context->groupEnabled.at(static_cast<std::size_t>(id)), 0) << id;
        EXPECT_EQ(context->tables.count(id), 0U) << id;
    }
    EXPECT_EQ(ZAV_hw_free(context), 0);
}

TEST_F(HwInitTest, TheWorkspaceIsADirectoryInTheHandlesOwn) {
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    const std::filesystem::path workspace = onlyEntryOf(handleDirectory());
    EXPECT_EQ(workspace.filename().string().find("quorvah" + std::to_string(getpid())), 0U);
    struct stat info = {};
    ASSERT_EQ(stat(workspace.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode, S_IFDIR | 0700U);
    EXPECT_EQ(narrow(context->tmpDir->getBasePath()), workspace);

    const std::filesystem::path scratch = narrow(context->scratchFile);
    EXPECT_EQ(scratch.parent_path(), workspace);
    EXPECT_EQ(scratch.filename().string().find("hw_" + std::to_string(getpid())), 0U);
    EXPECT_NE(scratch.filename().string().find(".xml_"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(scratch));
    EXPECT_EQ(ZAV_hw_free(context), 0);
    EXPECT_FALSE(std::filesystem::exists(workspace));
}

TEST_F(HwInitTest, LogsTheWorkspaceAsTheHardwareComponent) {
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    const std::string workspace = narrow(context->tmpDir->getBasePath());
    const std::string scratch = narrow(context->scratchFile);
    EXPECT_EQ(log_.messages,
              (Messages{
                  {2, 3, "TemporaryDir::TemporaryDir()", "BasePath [" + handleDirectory() + "]"},
                  {2, 3, "TemporaryDir::init()", "initialization"},
                  {2, 3, "TemporaryDir::init()", "Creating directory [" + workspace + "] success"},
                  {2, 3, "TemporaryDir::init()", "initialization successful [" + workspace + "]"},
                  {2, 3, "TemporaryDir::getTmpFile()", "Requesting tmpFile [" + scratch + "]"},
              }));
    EXPECT_EQ(ZAV_hw_free(context), 0);
}

TEST_F(HwInitTest, SucceedsWithoutAWorkspaceAndSaysSo) {
    const std::string directory = handleDirectory();
    std::filesystem::remove(directory);
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    ASSERT_NE(context, nullptr);
    const Messages own(log_.messages.end() - 2, log_.messages.end());
    EXPECT_EQ(own, (Messages{
                       {2, 3, "ZAV_hw_init", "Can't create temporary DIR: " + directory},
                       {2, 3, "ZAV_hw_init", "Error in TMP file creation: "},
                   }));

    EXPECT_EQ(ZAV_hw_setopt(context, 4, 1), 0);
    log_.messages.clear();
    EXPECT_EQ(ZAV_hw_run(context), 102);
    EXPECT_EQ(
        log_.messages,
        (Messages{{2, 3, "ZAV_hw_run", "Generating config file: []"},
                  {0, 3, "ZAV_hw_run",
                   "Cannot make a directory in [" + directory + "]: ENOENT (no such file or directory)"},
                  {0, 3, "ZAV_hw_run", "Config file creation error"}}));
    int returnCode = 0;
    EXPECT_EQ(ZAV_hw_get_returncode(context, &returnCode), 0);
    EXPECT_EQ(returnCode, -1);

    log_.messages.clear();
    EXPECT_EQ(ZAV_hw_free(context), 0);
    EXPECT_EQ(log_.messages, (Messages{{2, 3, "TemporaryDir::~TemporaryDir()", "Dealocation()"},
                                       {2, 3, "ZAV_hw_free", "Deleting logger 0, last call"}}));
    std::filesystem::create_directory(directory);
}

TEST_F(HwInitTest, ANullCallbackIsSilence) {
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(ZAV_hw_init(handle_, nullptr, &log_, &context), 0);
    EXPECT_EQ(ZAV_hw_setopt(context, 0, 1), 0);
    EXPECT_EQ(ZAV_hw_run(context), 103);
    EXPECT_EQ(ZAV_hw_free(context), 0);
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(HwInitTest, ContextsOfOneHandleHaveWorkspacesAndOptionsOfTheirOwn) {
    ZAVHwCtx* one = nullptr;
    ZAVHwCtx* other = nullptr;
    ASSERT_EQ(init(&one), 0);
    ASSERT_EQ(init(&other), 0);
    EXPECT_STRNE(one->tmpDir->getBasePath(), other->tmpDir->getBasePath());
    EXPECT_EQ(ZAV_hw_setopt(one, 0, 1), 0);
    EXPECT_EQ(one->groupEnabled.at(4), 1);
    EXPECT_EQ(other->groupEnabled.at(4), 0);
    EXPECT_EQ(ZAV_hw_free(one), 0);
    EXPECT_TRUE(std::filesystem::exists(narrow(other->tmpDir->getBasePath())));
    EXPECT_EQ(ZAV_hw_free(other), 0);
}

struct OptionCase {
    const char* name;
    int option;
    int value;
    int code;
    const char* message;  // null for none
};

class HwOptionTest : public InventoryTest, public testing::WithParamInterface<OptionCase> {};

TEST_P(HwOptionTest, IsAnsweredByItsCodeAndMessage) {
    const auto before = context()->groupEnabled;
    EXPECT_EQ(ZAV_hw_setopt(context(), GetParam().option, static_cast<unsigned char>(GetParam().value)),
              GetParam().code);
    Messages expected;
    if (GetParam().message != nullptr) expected = {{2, 3, "ZAV_hw_setopt", GetParam().message}};
    EXPECT_EQ(takeMessages(), expected);
    if (GetParam().code != 0) {
        EXPECT_EQ(context()->groupEnabled, before);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, HwOptionTest,
    testing::Values(OptionCase{"EnablesTheFirst", 1, 1, 0, "Setting opt: [1=true]"},
                    OptionCase{"DisablesTheFirst", 1, 0, 0, "Setting opt: [1=false]"},
                    OptionCase{"EnablesTheLast", 51, 1, 0, "Setting opt: [51=true]"},
                    OptionCase{"TakesTheGap17", 17, 1, 0, "Setting opt: [17=true]"},
                    OptionCase{"TakesTheGap18", 18, 0, 0, "Setting opt: [18=false]"},
                    OptionCase{"TakesTheGap33", 33, 1, 0, "Setting opt: [33=true]"},
                    OptionCase{"EnablesAll", 0, 1, 0, "Setting all opts: [true]"},
                    OptionCase{"DisablesAll", 0, 0, 0, "Setting all opts: [false]"},
                    OptionCase{"OnlyTheLowByteOfTheValueCounts", 4, 0x101, 0, "Setting opt: [4=true]"},
                    OptionCase{"RefusesOneBeyondTheLast", 52, 1, 101, nullptr},
                    OptionCase{"RefusesANegativeOption", -1, 1, 101, nullptr},
                    OptionCase{"RefusesTheLargestOption", 2147483647, 1, 101, nullptr},
                    OptionCase{"RefusesTheSmallestOption", -2147483647 - 1, 0, 101, nullptr},
                    OptionCase{"RefusesTheValueTwo", 4, 2, 7, nullptr},
                    OptionCase{"RefusesTheValue255", 0, 255, 7, nullptr},
                    OptionCase{"LooksAtTheValueFirst", 99, 9, 7, nullptr}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(HwOption, RefusesANullContextFirst) {
    EXPECT_EQ(ZAV_hw_setopt(nullptr, 99, 9), 3);
    EXPECT_EQ(ZAV_hw_setopt(nullptr, 4, 1), 3);
}

using HwOptionsTest = InventoryTest;

TEST_F(HwOptionsTest, AllAndThenOneLessLeavesTheOthersEnabled) {
    EXPECT_EQ(disable(0), 0);
    for (const unsigned char flag : context()->groupEnabled) EXPECT_EQ(flag, 0);
    EXPECT_EQ(enable(0), 0);
    EXPECT_EQ(disable(4), 0);
    for (std::size_t id = 0; id <= 51; ++id) EXPECT_EQ(context()->groupEnabled.at(id), id == 4 ? 0 : 1) << id;
}

TEST_F(HwOptionsTest, OneOptionChangesNoOther) {
    EXPECT_EQ(disable(0), 0);
    EXPECT_EQ(enable(17), 0);
    for (std::size_t id = 0; id <= 51; ++id)
        EXPECT_EQ(context()->groupEnabled.at(id), id == 17 ? 1 : 0) << id;
}

TEST_F(HwOptionsTest, AnyChangeInvalidatesTheScanButKeepsReturnedPointers) {
    scannerWrites("<QEL><Memory><Size>64</Size></Memory></QEL>");
    for (const int option : {3, 4, 17, 0}) {
        ASSERT_EQ(run(), 0);
        const wchar_t* size = nullptr;
        const wchar_t** names = nullptr;
        int count = 0;
        ASSERT_EQ(ZAV_hw_get_value(context(), 3, 0, L"Size", &size), 0);
        ASSERT_EQ(ZAV_hw_get_fields(context(), 3, 0, &names, &count), 0);
        EXPECT_EQ(disable(option), 0);
        EXPECT_EQ(returnCode(), -1);
        EXPECT_EQ(ZAV_hw_get_group_instances(context(), 3, &count), 107);
        EXPECT_EQ(ZAV_hw_get_fields(context(), 3, 0, &names, &count), 107);
        const wchar_t* value = nullptr;
        EXPECT_EQ(ZAV_hw_get_value(context(), 3, 0, L"Size", &value), 107);
        EXPECT_STREQ(size, L"64");
        EXPECT_STREQ(names[0], L"Size");
        EXPECT_EQ(enable(0), 0);
    }
}

TEST_F(HwOptionsTest, ARefusedChangeKeepsTheScan) {
    scannerWrites("<QEL><Memory/></QEL>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(ZAV_hw_setopt(context(), 52, 1), 101);
    EXPECT_EQ(ZAV_hw_setopt(context(), 3, 2), 7);
    EXPECT_EQ(instances(3), 1);
}

TEST(HwFree, RefusesANullContext) {
    EXPECT_EQ(ZAV_hw_free(nullptr), 3);
}

TEST(HwFree, ReleasesAnyContext) {
    auto* const bare = new ZAVHwCtx;
    EXPECT_EQ(ZAV_hw_free(bare), 0);
}

TEST(HwSetopt, NeedsNoLogger) {
    ZAVHwCtx bare;
    EXPECT_EQ(ZAV_hw_setopt(&bare, 4, 1), 0);
    EXPECT_EQ(ZAV_hw_setopt(&bare, 0, 0), 0);
    EXPECT_EQ(bare.groupEnabled.at(4), 0);
}

TEST_F(HwInitTest, FreeDeletesTheFilesThenTheDirectoryThenTheLogger) {
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    const std::string workspace = narrow(context->tmpDir->getBasePath());
    std::ofstream(narrow(context->scratchFile)) << "something";
    ASSERT_EQ(ZAV_hw_run(context), 103);  // leaves a configuration file
    log_.messages.clear();
    EXPECT_EQ(ZAV_hw_free(context), 0);
    EXPECT_EQ(
        log_.messages,
        (Messages{
            {2, 3, "TemporaryDir::~TemporaryDir()", "Dealocation()"},
            {2, 3, "TemporaryDir::deleteDirectory()", "Deleting directory [" + workspace + "] - success"},
            {2, 3, "ZAV_hw_free", "Deleting logger 0, last call"},
        }));
    EXPECT_FALSE(std::filesystem::exists(workspace));
}

TEST_F(HwInitTest, FreeKeepsForeignFiles) {
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    const std::filesystem::path workspace = narrow(context->tmpDir->getBasePath());
    std::ofstream(workspace / "foreign") << "kept";
    log_.messages.clear();
    EXPECT_EQ(ZAV_hw_free(context), 0);
    EXPECT_EQ(log_.messages[1].text, "Deleting directory [" + workspace.string() + "] - failed");
    EXPECT_EQ(zavtest::readAll(workspace / "foreign"), "kept");
    std::filesystem::remove_all(workspace);
}

TEST(DiscardResults, ReleasesEveryInstanceOfEveryGroup) {
    ZAVHwCtx context;
    for (const int id : {3, 51}) {
        context.tables.add(id, {{{L"Name", "value"}}});
        context.tables.add(id, {});
        EXPECT_EQ(context.tables.count(id), 2U);
    }
    context.returnCode = 0;
    context.discardResults();
    EXPECT_EQ(context.returnCode, -1);
    for (int id = 0; id <= 51; ++id) EXPECT_EQ(context.tables.count(id), 0U) << id;
}

}  // namespace
}  // namespace hwtest
