// The input files of the scanner, byte for byte.
#include <gtest/gtest.h>

#include "core/StdioFile.h"
#include "kest/Text.h"
#include "sw/SWConfigFile.h"
#include "sw/SWSignatureFile.h"
#include "tests/support/ConfigText.h"
#include "tests/sw/Evaluation.h"

namespace zav {
namespace {

using swtest::Messages;

class SWFilesTest : public testing::Test {
  protected:
    SWFilesTest() {
        context_.tmpDir = std::make_unique<TemporaryDir>(nullptr, directory_.path().wstring().c_str());
        EXPECT_EQ(context_.tmpDir->init(L"quorvis"), 0);
        context_.log = std::make_unique<ZAVlog>(4, zavtest::LogRecorder::callback, &log_);
    }

    std::string workspace() const { return kest::narrow(context_.tmpDir->getBasePath()); }
    // Removes the temporary directory, so that no file can be created in it.
    void loseWorkspace() { std::filesystem::remove_all(workspace()); }
    // Replaces the temporary directory by an uninitialised one, so that no names are available.
    void closeWorkspace() {
        context_.tmpDir = std::make_unique<TemporaryDir>(nullptr, directory_.path().wstring().c_str());
    }

    std::string config() {
        std::wstring path;
        EXPECT_EQ(SW_CreateConfigFile(&context_, path), 0);
        return zavtest::readAll(kest::narrow(path));
    }

    std::string signatures(std::vector<const wchar_t*> texts) {
        std::wstring path;
        EXPECT_EQ(SW_CreateSignatures(&context_, path, texts.data(), static_cast<unsigned int>(texts.size())),
                  0);
        return zavtest::readAll(kest::narrow(path));
    }

    zavtest::ScratchDir directory_;
    zavtest::LogRecorder log_;
    ZAVSwCtx context_;
};

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string kSignaturesHead = kDeclaration + "<Signatures>\n";
const std::string kSignaturesTail = "</Signatures>\n";

std::string expected(const std::string& options) {
    return zavtest::configText("XSE", options);
}

TEST_F(SWFilesTest, AConfigurationWithoutOptionsHoldsAnEmptySection) {
    EXPECT_EQ(config(), expected(""));
}

TEST_F(SWFilesTest, VariablesComeInTheOrderOfTheirNames) {
    context_.variables[L"b"] = {L"1", L"guid-1"};
    context_.variables[L"a"] = {L"2", L""};
    context_.variables[L"aa"] = {L"", L"x"};
    context_.variables[L"Z"] = {L"3", L"y"};
    EXPECT_EQ(config(), expected("\t\t\t<PresetVariables>\n"
                                 "\t\t\t\t<Variable name=\"Z\" value=\"3\" guid=\"y\" />\n"
                                 "\t\t\t\t<Variable name=\"a\" value=\"2\" guid=\"\" />\n"
                                 "\t\t\t\t<Variable name=\"aa\" value=\"\" guid=\"x\" />\n"
                                 "\t\t\t\t<Variable name=\"b\" value=\"1\" guid=\"guid-1\" />\n"
                                 "\t\t\t</PresetVariables>\n"));
}

TEST_F(SWFilesTest, PluginsComeInTheOrderOfTheirNamesAndSettingsInTheirOwn) {
    context_.pluginConfigs[L"Q"] = {{L"z", L"1"}};
    context_.pluginConfigs[L"P"] = {{L"b", L"1"}, {L"a", L"2"}, {L"b", L"1"}};
    context_.pluginConfigs[L"None"] = {};
    EXPECT_EQ(config(), expected("\t\t\t<Plugins>\n"
                                 "\t\t\t\t<Plugin name=\"P\" version=\"1.0\">\n"
                                 "\t\t\t\t\t<Attribute name=\"b\" value=\"1\"/>\n"
                                 "\t\t\t\t\t<Attribute name=\"a\" value=\"2\"/>\n"
                                 "\t\t\t\t\t<Attribute name=\"b\" value=\"1\"/>\n"
                                 "\t\t\t\t</Plugin>\n"
                                 "\t\t\t\t<Plugin name=\"Q\" version=\"1.0\">\n"
                                 "\t\t\t\t\t<Attribute name=\"z\" value=\"1\"/>\n"
                                 "\t\t\t\t</Plugin>\n"
                                 "\t\t\t</Plugins>\n"));
}

TEST_F(SWFilesTest, VariablesStandBeforePlugins) {
    context_.variables[L"v"] = {L"1", L"2"};
    context_.pluginConfigs[L"P"] = {{L"a", L"b"}};
    const std::string text = config();
    const std::size_t variables = text.find("\t\t\t</PresetVariables>\n\t\t\t<Plugins>\n");
    EXPECT_NE(variables, std::string::npos);
}

TEST_F(SWFilesTest, NothingIsEscapedAndCharactersAreCutToEightBits) {
    context_.variables[L"<&\">"] = {L"\x00E9\x0161", L"ab\x0100ignored"};
    EXPECT_EQ(config(), expected("\t\t\t<PresetVariables>\n"
                                 "\t\t\t\t<Variable name=\"<&\">\" value=\"\xE9"
                                 "a\" guid=\"ab\" />\n"
                                 "\t\t\t</PresetVariables>\n"));
    EXPECT_EQ(signatures({L"<a>\x00E9</a>", L"x\x0100y", L"z"}),
              kSignaturesHead + "<a>\xE9</a>xz" + kSignaturesTail);
}

TEST_F(SWFilesTest, SignaturesAreWrittenInOrderWithNothingBetweenThem) {
    EXPECT_EQ(signatures({L"A", L"B"}), kSignaturesHead + "AB" + kSignaturesTail);
    EXPECT_EQ(signatures({L"", L" \n", L""}), kSignaturesHead + " \n" + kSignaturesTail);
}

TEST_F(SWFilesTest, NoSignaturesAreAnEmptyList) {
    EXPECT_EQ(signatures({}), kSignaturesHead + kSignaturesTail);
    const wchar_t* unused[] = {L"unused"};
    std::wstring path;
    EXPECT_EQ(SW_CreateSignatures(&context_, path, nullptr, 7), 0);
    EXPECT_EQ(zavtest::readAll(kest::narrow(path)), kSignaturesHead + kSignaturesTail);
    EXPECT_EQ(SW_CreateSignatures(&context_, path, unused, 0), 0);
    EXPECT_EQ(zavtest::readAll(kest::narrow(path)), kSignaturesHead + kSignaturesTail);
}

TEST_F(SWFilesTest, OneSignatureIsWrittenAsOneOfMany) {
    std::wstring path;
    EXPECT_EQ(SW_CreateSignature(&context_, path, L"<Signature/>"), 0);
    EXPECT_EQ(zavtest::readAll(kest::narrow(path)), kSignaturesHead + "<Signature/>" + kSignaturesTail);
    EXPECT_EQ(log_.messages, (Messages{{2, 4, "SW_CreateSignatures()",
                                        "Creating a signature file [" + kest::narrow(path) + "]"}}));
}

TEST_F(SWFilesTest, FilesHaveDistinctNamesInTheWorkspaceWhichDeletesThem) {
    std::wstring configFile;
    std::wstring signatureFile;
    ASSERT_EQ(SW_CreateConfigFile(&context_, configFile), 0);
    ASSERT_EQ(SW_CreateSignature(&context_, signatureFile, L""), 0);
    const std::filesystem::path config = kest::narrow(configFile);
    const std::filesystem::path signature = kest::narrow(signatureFile);
    EXPECT_EQ(config.parent_path(), workspace());
    EXPECT_EQ(signature.parent_path(), workspace());
    EXPECT_TRUE(config.filename().string().starts_with("cfg_" + std::to_string(getpid()))) << config;
    EXPECT_TRUE(signature.filename().string().starts_with("sig_" + std::to_string(getpid()))) << signature;
    for (const std::filesystem::path& each : {config, signature}) {
        EXPECT_NE(each.filename().string().find(".xml"), std::string::npos) << each;
    }
    EXPECT_EQ(log_.messages,
              (Messages{{2, 4, "SW_CreateConfigFile", "Creating a config file [" + config.string() + "]"},
                        {2, 4, "SW_CreateSignatures()",
                         "Creating a signature file [" + signature.string() + "]"}}));
    EXPECT_EQ(context_.tmpDir->deleteFiles(true), 0);
    EXPECT_TRUE(std::filesystem::is_empty(workspace()));
}

TEST_F(SWFilesTest, ANullSignatureIsAFailedWriteAndTheRestIsSkipped) {
    const wchar_t* texts[] = {L"A", nullptr, L"B"};
    std::wstring many;
    std::wstring one;
    EXPECT_EQ(SW_CreateSignatures(&context_, many, texts, 3), 202);
    EXPECT_EQ(SW_CreateSignature(&context_, one, nullptr), 202);
    EXPECT_EQ(zavtest::readAll(kest::narrow(many)), kSignaturesHead + "A");
    EXPECT_EQ(zavtest::readAll(kest::narrow(one)), kSignaturesHead);
    const auto messages = [](const std::wstring& path) {
        const std::string name = "[" + kest::narrow(path) + "]";
        return Messages{{2, 4, "SW_CreateSignatures()", "Creating a signature file " + name},
                        {0, 4, "SW_CreateSignatures()", "Error during write " + name}};
    };
    Messages expected = messages(many);
    for (const zavtest::Message& message : messages(one)) expected.push_back(message);
    EXPECT_EQ(log_.messages, expected);
}

// The scanner will report the missing file.
TEST_F(SWFilesTest, AConfigurationThatCannotBeOpenedIsASuccess) {
    loseWorkspace();
    std::wstring path;
    EXPECT_EQ(SW_CreateConfigFile(&context_, path), 0);
    EXPECT_FALSE(std::filesystem::exists(kest::narrow(path)));
    EXPECT_EQ(
        log_.messages,
        (Messages{{2, 4, "SW_CreateConfigFile", "Creating a config file [" + kest::narrow(path) + "]"}}));
}

TEST_F(SWFilesTest, SignaturesThatCannotBeOpenedAreAnErrorWithoutAMessage) {
    loseWorkspace();
    std::wstring path;
    EXPECT_EQ(SW_CreateSignature(&context_, path, L"A"), 202);
    EXPECT_EQ(log_.messages, (Messages{{2, 4, "SW_CreateSignatures()",
                                        "Creating a signature file [" + kest::narrow(path) + "]"}}));
}

TEST_F(SWFilesTest, WithoutANameTheConfigurationIsLoggedButNotWritten) {
    closeWorkspace();
    std::wstring path = L"as before";
    EXPECT_EQ(SW_CreateConfigFile(&context_, path), 201);
    EXPECT_EQ(path, L"as before");
    EXPECT_EQ(log_.messages, (Messages{{2, 4, "SW_CreateConfigFile", "Creating a config file [as before]"}}));
}

TEST_F(SWFilesTest, WithoutANameSignaturesGoWhereTheNameLeads) {
    closeWorkspace();
    std::wstring path = (directory_.path() / "mine").wstring();
    const wchar_t* texts[] = {L"A"};
    EXPECT_EQ(SW_CreateSignatures(&context_, path, texts, 1), 6);
    EXPECT_EQ(zavtest::readAll(directory_.path() / "mine"), kSignaturesHead + "A" + kSignaturesTail);
    EXPECT_EQ(SW_CreateSignature(&context_, path, L"B"), 6);
    EXPECT_EQ(zavtest::readAll(directory_.path() / "mine"), kSignaturesHead + "B" + kSignaturesTail);
    path.clear();
    EXPECT_EQ(SW_CreateSignature(&context_, path, L"A"), 202);
}

// The content fits into the stream's buffer, so the full disk is detected when the file is closed.
TEST_F(SWFilesTest, AFullDiskThatShowsOnlyAtTheEndIsAFailedWrite) {
    closeWorkspace();
    std::wstring path = L"/dev/full";
    EXPECT_EQ(SW_CreateSignature(&context_, path, L"A"), 202);
    EXPECT_EQ(log_.messages.back(),
              (zavtest::Message{0, 4, "SW_CreateSignatures()", "Error during write [/dev/full]"}));
}

TEST_F(SWFilesTest, NothingElseInTheContextChanges) {
    context_.returnCode = 0;
    config();
    signatures({L"A"});
    loseWorkspace();
    std::wstring path;
    SW_CreateSignature(&context_, path, L"A");
    EXPECT_EQ(context_.returnCode, 0);
}

TEST_F(SWFilesTest, NoWriterNeedsALogger) {
    context_.log.reset();
    std::wstring path;
    EXPECT_EQ(SW_CreateConfigFile(&context_, path), 0);
    EXPECT_EQ(SW_CreateSignature(&context_, path, nullptr), 202);
    closeWorkspace();
    EXPECT_EQ(SW_CreateConfigFile(&context_, path), 201);
}

TEST(SWFiles, ANullContextIsRefused) {
    std::wstring path;
    EXPECT_EQ(SW_CreateConfigFile(nullptr, path), 3);
    EXPECT_EQ(SW_CreateSignatures(nullptr, path, nullptr, 0), 3);
    EXPECT_EQ(SW_CreateSignature(nullptr, path, nullptr), 3);
    EXPECT_EQ(path, L"");
}

TEST(SWWriteData, WritesATextUpToItsEnd) {
    const zavtest::ScratchDir directory;
    const std::string path = directory.path() / "file";
    {
        const StdioFile file = openFile(path.c_str(), "we");
        EXPECT_TRUE(SW_writeData(nullptr, file.get(), "one "));
        EXPECT_TRUE(SW_writeData(nullptr, file.get(), ""));
        EXPECT_TRUE(SW_writeData(nullptr, file.get(), L"two \x00E9 "));
        EXPECT_TRUE(SW_writeData(nullptr, file.get(), L"three\x0200 and more"));
        EXPECT_TRUE(SW_writeData(nullptr, file.get(), L""));
    }
    EXPECT_EQ(zavtest::readAll(path), "one two \xE9 three");
}

TEST(SWWriteData, ReportsANullTextAndAFailedWrite) {
    const StdioFile readOnly = openFile("/dev/null", "re");
    EXPECT_FALSE(SW_writeData(nullptr, readOnly.get(), static_cast<const char*>(nullptr)));
    EXPECT_FALSE(SW_writeData(nullptr, readOnly.get(), static_cast<const wchar_t*>(nullptr)));
    EXPECT_FALSE(SW_writeData(nullptr, readOnly.get(), "text"));
    EXPECT_FALSE(SW_writeData(nullptr, readOnly.get(), L"text"));
    EXPECT_TRUE(SW_writeData(nullptr, readOnly.get(), ""));
}

}  // namespace
}  // namespace zav
