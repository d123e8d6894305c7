// The lifecycle of a software context and its options.
#include "sw/ZAVSwCtx.h"

#include <sys/stat.h>

#include "kest/Text.h"
#include "tests/sw/Evaluation.h"

namespace swtest {
namespace {

using zavtest::LogRecorder;

std::string narrow(const std::wstring& text) {
    return kest::narrow(text);
}

// A library handle without a context.
class SwInitTest : public testing::Test, private zavtest::NothingLeft {
  protected:
    SwInitTest() {
        EXPECT_EQ(ZAV_init("tests", nullptr, nullptr, temp().wstring().c_str(), L"/opt//zav/bin", &handle_),
                  0);
    }
    ~SwInitTest() override {
        EXPECT_EQ(ZAV_free(handle_), 0);
        EXPECT_TRUE(std::filesystem::is_empty(temp()));
    }

    const std::filesystem::path& temp() const { return temp_.path(); }
    std::string handleDirectory() const { return narrow(handle_->tempDir->getBasePath()); }
    int init(ZAVSwCtx** context) { return ZAV_sw_init(handle_, LogRecorder::callback, &log_, context); }

    ZAVCtx* handle_ = nullptr;
    LogRecorder log_;

  private:
    zavtest::ScratchDir temp_;
};

TEST_F(SwInitTest, RefusesANullLibraryFirstAndKeepsTheOutput) {
    auto* const before = reinterpret_cast<ZAVSwCtx*>(this);
    ZAVSwCtx* context = before;
    EXPECT_EQ(ZAV_sw_init(nullptr, LogRecorder::callback, &log_, &context), 3);
    EXPECT_EQ(context, before);
    EXPECT_EQ(ZAV_sw_init(nullptr, nullptr, nullptr, nullptr), 3);
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(SwInitTest, RefusesANullContextNext) {
    EXPECT_EQ(init(nullptr), 209);
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(SwInitTest, ANewContextHasOnlyTheHandlesSettings) {
    ZAVSwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    EXPECT_EQ(context->library, handle_);
    EXPECT_EQ(context->installDir, L"/opt/zav/bin");
    EXPECT_EQ(context->returnCode, -1);
    EXPECT_TRUE(context->variables.empty());
    EXPECT_TRUE(context->pluginConfigs.empty());
    EXPECT_TRUE(context->results.empty());
    EXPECT_TRUE(context->warnings.empty());
    EXPECT_EQ(context->guidResults.first(L""), nullptr);
    EXPECT_EQ(context->resultsArray, nullptr);
    EXPECT_EQ(context->warningsArray, nullptr);
    EXPECT_EQ(ZAV_sw_free(context), 0);
}

TEST_F(SwInitTest, TheWorkspaceIsADirectoryInTheHandlesOwn) {
    ZAVSwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    const std::filesystem::path workspace = narrow(context->tmpDir->getBasePath());
    EXPECT_EQ(workspace.parent_path(), handleDirectory());
    EXPECT_TRUE(workspace.filename().string().starts_with("quorvis" + std::to_string(getpid())));
    struct stat info = {};
    ASSERT_EQ(stat(workspace.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode, S_IFDIR | 0700U);
    EXPECT_EQ(log_.messages,
              (Messages{
                  {2, 4, "TemporaryDir::TemporaryDir()", "BasePath [" + handleDirectory() + "]"},
                  {2, 4, "TemporaryDir::init()", "initialization"},
                  {2, 4, "TemporaryDir::init()", "Creating directory [" + workspace.string() + "] success"},
                  {2, 4, "TemporaryDir::init()", "initialization successful [" + workspace.string() + "]"},
              }));
    EXPECT_EQ(ZAV_sw_free(context), 0);
    EXPECT_FALSE(std::filesystem::exists(workspace));
}

TEST_F(SwInitTest, SucceedsWithoutAWorkspaceAndSaysSo) {
    const std::string directory = handleDirectory();
    std::filesystem::remove(directory);
    ZAVSwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    EXPECT_EQ(log_.messages.back(),
              (zavtest::Message{2, 4, "ZAV_sw_init", "Can't create temporary DIR: " + directory}));

    log_.messages.clear();
    const wchar_t* signatures[] = {L"<Signature/>"};
    EXPECT_EQ(ZAV_sw_evaluate(context, signatures[0]), 201);
    EXPECT_EQ(ZAV_sw_evaluate_multi(context, signatures, 1), 201);
    EXPECT_EQ(ZAV_sw_evaluate_file(context, L"/none"), 201);
    const zavtest::Message unnamed = {2, 4, "SW_CreateConfigFile", "Creating a config file []"};
    const zavtest::Message reason = {
        0, 4, "SW_CreateConfigFile()",
        "Cannot make a directory in [" + directory + "]: ENOENT (no such file or directory)"};
    EXPECT_EQ(log_.messages, (Messages{unnamed, reason, unnamed, reason, unnamed, reason}));
    EXPECT_EQ(context->returnCode, -1);

    log_.messages.clear();
    EXPECT_EQ(ZAV_sw_free(context), 0);
    EXPECT_EQ(log_.messages, (Messages{{2, 4, "ZAV_sw_free", "Deleting context"},
                                       {2, 4, "TemporaryDir::~TemporaryDir()", "Dealocation()"}}));
    std::filesystem::create_directory(directory);
}

TEST_F(SwInitTest, ANullCallbackIsSilence) {
    ZAVSwCtx* context = nullptr;
    ASSERT_EQ(ZAV_sw_init(handle_, nullptr, &log_, &context), 0);
    EXPECT_EQ(ZAV_sw_setopt_variable(context, L"a", L"b", L"c"), 0);
    EXPECT_EQ(ZAV_sw_setopt_variable(context, L"a", L"b", nullptr), 7);
    EXPECT_EQ(ZAV_sw_evaluate(context, L"<Signature/>"), 203);
    EXPECT_EQ(ZAV_sw_free(context), 0);
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(SwInitTest, ContextsOfOneHandleHaveWorkspacesAndOptionsOfTheirOwn) {
    ZAVSwCtx* one = nullptr;
    ZAVSwCtx* other = nullptr;
    ASSERT_EQ(init(&one), 0);
    ASSERT_EQ(init(&other), 0);
    EXPECT_STRNE(one->tmpDir->getBasePath(), other->tmpDir->getBasePath());
    EXPECT_EQ(ZAV_sw_setopt_variable(one, L"a", L"b", L"c"), 0);
    EXPECT_TRUE(other->variables.empty());
    EXPECT_EQ(ZAV_sw_free(one), 0);
    EXPECT_TRUE(std::filesystem::exists(narrow(other->tmpDir->getBasePath())));
    EXPECT_EQ(ZAV_sw_free(other), 0);
}

TEST_F(SwInitTest, FreeDeletesTheFilesAndTheDirectoryAndIsSilentFromThenOn) {
    ZAVSwCtx* context = nullptr;
    ASSERT_EQ(init(&context), 0);
    const std::string workspace = narrow(context->tmpDir->getBasePath());
    ASSERT_EQ(ZAV_sw_evaluate(context, L"<Signature/>"), 203);
    EXPECT_FALSE(std::filesystem::is_empty(workspace));
    log_.messages.clear();
    EXPECT_EQ(ZAV_sw_free(context), 0);
    EXPECT_EQ(
        log_.messages,
        (Messages{
            {2, 4, "ZAV_sw_free", "Deleting context"},
            {2, 4, "TemporaryDir::~TemporaryDir()", "Dealocation()"},
            {2, 4, "TemporaryDir::deleteDirectory()", "Deleting directory [" + workspace + "] - success"},
        }));
    EXPECT_FALSE(std::filesystem::exists(workspace));
}

TEST(SwFree, RefusesANullContext) {
    EXPECT_EQ(ZAV_sw_free(nullptr), 3);
}

TEST(SwFree, ReleasesAnyContext) {
    auto* const bare = new ZAVSwCtx;
    EXPECT_EQ(ZAV_sw_free(bare), 0);
}

using SwOptionTest = EvaluationTest;

TEST_F(SwOptionTest, AVariableIsStoredAndLoggedUnderAPluralName) {
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), L"name", L"value", L"scope"), 0);
    EXPECT_EQ(takeMessages(), (Messages{{2, 4, "ZAV_sw_setopt_variables",
                                         "Variable [name] set with value [value] for scope [scope]"}}));
    ASSERT_EQ(context()->variables.size(), 1U);
    EXPECT_EQ(context()->variables.at(L"name").value, L"value");
    EXPECT_EQ(context()->variables.at(L"name").scope, L"scope");
}

TEST_F(SwOptionTest, AVariableSetAgainHasItsSecondValueAndScope) {
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), L"X", L"1", L"A"), 0);
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), L"X", L"2", L"B"), 0);
    ASSERT_EQ(context()->variables.size(), 1U);
    EXPECT_EQ(context()->variables.at(L"X").value, L"2");
    EXPECT_EQ(context()->variables.at(L"X").scope, L"B");
}

TEST_F(SwOptionTest, ASettingIsStoredAndLoggedAtTheLowestLevel) {
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"P", L"a", L"1"), 0);
    EXPECT_EQ(takeMessages(), (Messages{{0, 4, "ZAV_sw_setopt_config", "Plugin [P] config set [a] = [1]"}}));
}

TEST_F(SwOptionTest, SettingsOfAPluginAreAllKeptInOrder) {
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"P", L"b", L"1"), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"Q", L"a", L"2"), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"P", L"a", L"3"), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"P", L"b", L"4"), 0);
    EXPECT_EQ(context()->pluginConfigs,
              (std::map<std::wstring, zav::SWSettings>{{L"P", {{L"b", L"1"}, {L"a", L"3"}, {L"b", L"4"}}},
                                                       {L"Q", {{L"a", L"2"}}}}));
}

TEST_F(SwOptionTest, EmptyTextsAreTextsLikeAnyOther) {
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), L"", L"", L""), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"", L"", L""), 0);
    EXPECT_EQ(takeMessages(),
              (Messages{{2, 4, "ZAV_sw_setopt_variables", "Variable [] set with value [] for scope []"},
                        {0, 4, "ZAV_sw_setopt_config", "Plugin [] config set [] = []"}}));
    EXPECT_EQ(context()->variables.count(L""), 1U);
    EXPECT_EQ(context()->pluginConfigs.at(L""), (zav::SWSettings{{L"", L""}}));
}

TEST_F(SwOptionTest, TheTextsAreCopied) {
    wchar_t text[] = L"x";
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), text, text, text), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), text, text, text), 0);
    *text = L'y';
    EXPECT_EQ(context()->variables.at(L"x").value, L"x");
    EXPECT_EQ(context()->pluginConfigs.at(L"x"), (zav::SWSettings{{L"x", L"x"}}));
}

TEST_F(SwOptionTest, EveryNullTextIsRefusedAndNothingChanges) {
    scannerWrites("<QEL/>");
    ASSERT_EQ(run(), 0);
    for (int null = 0; null < 3; ++null) {
        const wchar_t* texts[] = {L"a", L"b", L"c"};
        texts[null] = nullptr;
        takeMessages();
        EXPECT_EQ(ZAV_sw_setopt_variable(context(), texts[0], texts[1], texts[2]), 7);
        EXPECT_EQ(ZAV_sw_setopt_config(context(), texts[0], texts[1], texts[2]), 7);
        const std::string message = "Error: some of the attributes are NULL";
        EXPECT_EQ(takeMessages(), (Messages{{0, 4, "ZAV_sw_setopt_variables", message},
                                            {0, 4, "ZAV_sw_setopt_config", message}}));
    }
    EXPECT_TRUE(context()->variables.empty());
    EXPECT_TRUE(context()->pluginConfigs.empty());
    EXPECT_EQ(returnCode(), 0);
}

TEST(SwOption, RefusesANullContextFirst) {
    EXPECT_EQ(ZAV_sw_setopt_variable(nullptr, nullptr, nullptr, nullptr), 3);
    EXPECT_EQ(ZAV_sw_setopt_config(nullptr, nullptr, nullptr, nullptr), 3);
    EXPECT_EQ(ZAV_sw_setopt_variable(nullptr, L"a", L"b", L"c"), 3);
    EXPECT_EQ(ZAV_sw_setopt_config(nullptr, L"a", L"b", L"c"), 3);
}

TEST(SwOption, NeedsNoLogger) {
    ZAVSwCtx bare;
    EXPECT_EQ(ZAV_sw_setopt_variable(&bare, L"a", L"b", L"c"), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(&bare, L"a", L"b", L"c"), 0);
    EXPECT_EQ(ZAV_sw_setopt_variable(&bare, nullptr, L"b", L"c"), 7);
    EXPECT_EQ(ZAV_sw_setopt_config(&bare, nullptr, L"b", L"c"), 7);
}

TEST_F(SwOptionTest, AnyChangeInvalidatesTheResultsButKeepsReturnedPointers) {
    scannerWrites("<QEL><MatchedSignature guid='1'><Variable name='a' value='b'/></MatchedSignature></QEL>");
    for (const bool setting : {false, true}) {
        ASSERT_EQ(run(), 0);
        ZAVSwResult* const result = results().at(0);
        const wchar_t* value = nullptr;
        ASSERT_EQ(ZAV_sw_get_value(context(), result, L"a", &value), 0);
        EXPECT_EQ(setting ? ZAV_sw_setopt_config(context(), L"a", L"b", L"c")
                          : ZAV_sw_setopt_variable(context(), L"a", L"b", L"c"),
                  0);
        EXPECT_EQ(returnCode(), -1);
        ZAVSwResult** all = nullptr;
        int count = 0;
        EXPECT_EQ(ZAV_sw_get_results(context(), &all, &count), 206);
        EXPECT_STREQ(value, L"b");
        EXPECT_EQ(find(L"1"), result);
    }
}

TEST_F(SwOptionTest, OptionsOutliveEvaluations) {
    scannerWrites("<QEL/>");
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), L"a", L"b", L"c"), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"P", L"d", L"e"), 0);
    ASSERT_EQ(run(), 0);
    const std::string first = read("seen_configuration");
    EXPECT_NE(first.find("<Variable name=\"a\" value=\"b\" guid=\"c\" />"), std::string::npos);
    EXPECT_NE(first.find("<Attribute name=\"d\" value=\"e\"/>"), std::string::npos);
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(read("seen_configuration"), first);
}

}  // namespace
}  // namespace swtest
