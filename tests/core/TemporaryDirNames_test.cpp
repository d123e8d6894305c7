// The names that TemporaryDir makes: conversions, the parent directory, random names.

#include "tests/core/TemporaryDirFixture.h"
#include "tests/support/EnvironmentVariable.h"

namespace zav::test {
namespace {

using zavtest::EnvironmentVariable;
using zavtest::OpenRule;

class TemporaryDirNames : public TemporaryDirTest {};

TEST_F(TemporaryDirNames, NarrowingKeepsTheLowByteOfEachCharacter) {
    const auto workspace = make();
    EXPECT_EQ(workspace->WStringToString(L""), "");
    EXPECT_EQ(workspace->WStringToString(L"/tmp/a b"), "/tmp/a b");
    EXPECT_EQ(workspace->WStringToString(L"\xE4\x20AC\x1F62F"), "\xE4\xAC\x2F");
}

TEST_F(TemporaryDirNames, WideningTakesEachByteAsASignedCharacter) {
    const auto workspace = make();
    EXPECT_EQ(workspace->StringToWString(""), L"");
    EXPECT_EQ(workspace->StringToWString("/tmp/a b"), L"/tmp/a b");
    const std::wstring expected = {static_cast<wchar_t>(-128), L'\x7F', static_cast<wchar_t>(-1)};
    EXPECT_EQ(workspace->StringToWString("\x80\x7F\xFF"), expected);
    std::string bytes(256, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i);
    EXPECT_EQ(workspace->WStringToString(workspace->StringToWString(bytes)), bytes);
}

TEST_F(TemporaryDirNames, EveryRunOfSlashesBecomesOne) {
    const auto workspace = make();
    const struct {
        const wchar_t* before;
        const wchar_t* after;
    } cases[] = {{L"", L""},        {L"/", L"/"},       {L"//", L"/"},           {L"///////", L"/"},
                 {L"a//b", L"a/b"}, {L"a/b/", L"a/b/"}, {L"a///b////", L"a/b/"}, {L"//a//b", L"/a/b"}};
    for (const auto& each : cases) {
        std::wstring directory = each.before;
        workspace->normalizeDir(directory);
        EXPECT_EQ(directory, each.after);
    }
    EXPECT_EQ(workspace->getDirectorySeparator(), L"/");
}

TEST_F(TemporaryDirNames, SystemDirectoryComesFromTempThenTmpThenTheLiteral) {
    const struct {
        std::optional<std::string> temp;
        std::optional<std::string> tmp;
        const char* expected;
    } cases[] = {
        {"/one", "/two", "/one"},
        {"/one", std::nullopt, "/one"},
        {std::nullopt, "/two", "/two"},
        {std::nullopt, std::nullopt, "/tmp"},
        {"", "/two", ""},
        {std::nullopt, "", ""},
        {"/a//b/", std::nullopt, "/a//b/"},
    };
    const auto workspace = make();
    for (const auto& each : cases) {
        const EnvironmentVariable temp("TEMP", each.temp);
        const EnvironmentVariable tmp("TMP", each.tmp);
        recorder_.messages.clear();
        EXPECT_EQ(workspace->getSystemTempPath(), kest::widen(each.expected));
        EXPECT_EQ(recorder_.messages,
                  (std::vector{message("TemporaryDir::getSystemTempPath()",
                                       "Requesting system TMP path [" + std::string(each.expected) + "]")}));
    }
}

TEST_F(TemporaryDirNames, WithoutAGivenDirectoryTheSystemsIsTakenAndNormalised) {
    const EnvironmentVariable temp("TEMP", "/var//tmp/");
    const TemporaryDir workspace(&log_, nullptr);
    EXPECT_EQ(workspace.parentPath(), L"/var/tmp/");
    EXPECT_EQ(recorder_.messages,
              (std::vector{
                  message("TemporaryDir::getSystemTempPath()", "Requesting system TMP path [/var//tmp/]"),
                  message("TemporaryDir::TemporaryDir()", "BasePath [/var/tmp/]"),
              }));
}

TEST_F(TemporaryDirNames, GivenDirectoryIsNormalised) {
    const TemporaryDir workspace(&log_, L"/var/tmp//x/");
    EXPECT_EQ(workspace.parentPath(), L"/var/tmp/x/");
    EXPECT_EQ(recorder_.messages,
              (std::vector{message("TemporaryDir::TemporaryDir()", "BasePath [/var/tmp/x/]")}));
}

TEST_F(TemporaryDirNames, WorkspaceIsMadeBelowTheSystemsDirectory) {
    for (const char* const variable : {"TEMP", "TMP"}) {
        const EnvironmentVariable temp("TEMP", std::nullopt);
        const EnvironmentVariable tmp("TMP", std::nullopt);
        const EnvironmentVariable chosen(variable, base_.path().string());
        TemporaryDir workspace(&log_, nullptr);
        EXPECT_EQ(workspace.init(L"zav_"), 0);
        EXPECT_EQ(std::filesystem::path(workspace.getBasePath()).parent_path(), base_.path()) << variable;
    }
}

TEST_F(TemporaryDirNames, RandomCharactersFollowTheMapping) {
    std::vector<std::uint32_t> values;
    std::string expected;
    const auto add = [&](std::uint32_t value, char character) {
        values.push_back(value);
        expected += character;
    };
    const std::string digits = "0123456789";
    const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::string lower = "abcdefghijklmnopqrstuvwxy";
    // The remainders 0 to 9 and 48 to 57 become digits, 10 to 16 and 58 to 64 become "A" to "G", and so on.
    for (std::uint32_t r = 0; r < 10; ++r) add(r, digits[r]);
    for (std::uint32_t r = 10; r < 17; ++r) add(r, upper[r - 10]);
    for (std::uint32_t r = 17; r < 43; ++r) add(r, upper[r - 17]);
    for (std::uint32_t r = 43; r < 48; ++r) add(r, lower[r - 43]);
    for (std::uint32_t r = 48; r < 58; ++r) add(r, digits[r - 48]);
    for (std::uint32_t r = 58; r < 65; ++r) add(r, upper[r - 58]);
    for (std::uint32_t r = 65; r < 91; ++r) add(r, upper[r - 65]);
    for (std::uint32_t r = 91; r < 97; ++r) add(r, lower[r - 91]);
    for (std::uint32_t r = 97; r < 122; ++r) add(r, lower[r - 97]);
    add(122, '0');
    add(122 * 3 + 121, 'y');
    add(0xFFFFFFFFU, 'u');
    const RandomValues random(values);
    const auto workspace = make();
    const std::string name = workspace->WStringToString(
        workspace->getRandomName(nullptr, nullptr, static_cast<int>(values.size()) - 1));
    EXPECT_EQ(name, processIds() + expected);
}

TEST_F(TemporaryDirNames, RandomNameHoldsTheProcessIdsAndOneCharacterMoreThanCounted) {
    const NoRandomness zeros;
    const auto workspace = make();
    const std::wstring pid = std::to_wstring(getpid());
    const std::wstring ids = kest::widen(processIds());
    const struct {
        int count;
        std::wstring expected;
    } cases[] = {{-100, L""},
                 {-3, L""},
                 {-2, pid},
                 {-1, ids},
                 {0, ids + L"0"},
                 {1, ids + L"00"},
                 {9, ids + std::wstring(10, L'0')}};
    for (const auto& each : cases) {
        EXPECT_EQ(workspace->getRandomName(nullptr, nullptr, each.count), each.expected);
        EXPECT_EQ(workspace->getRandomName(L"p", nullptr, each.count), L"p" + each.expected);
        EXPECT_EQ(workspace->getRandomName(nullptr, L".x", each.count), each.expected + L".x");
        EXPECT_EQ(workspace->getRandomName(L"p_", L".xml", each.count), L"p_" + each.expected + L".xml");
        EXPECT_EQ(workspace->getRandomName(L"", L"", each.count), each.expected);
    }
}

TEST_F(TemporaryDirNames, RandomNamesHoldDigitsAndLettersButNoZ) {
    const auto workspace = make();
    const std::string name = workspace->WStringToString(workspace->getRandomName(nullptr, nullptr, 50000));
    EXPECT_TRUE(name.starts_with(processIds()));
    EXPECT_EQ(name.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxy"),
              std::string::npos);
}

TEST_F(TemporaryDirNames, RandomValuesAreTheDevicesBytes) {
    const RandomValues random({1, 0xFFFFFFFFU, 0x12345678U});
    const auto workspace = make();
    EXPECT_EQ(workspace->getRand(), 1U);
    EXPECT_EQ(workspace->getRand(), 0xFFFFFFFFU);
    EXPECT_EQ(workspace->getRand(), 0x12345678U);
}

TEST_F(TemporaryDirNames, WhereTheDeviceEndsTheGeneratorGoesOn) {
    const RandomValues random({1});
    const auto workspace = make();
    EXPECT_EQ(workspace->getRand(), 1U);
    std::srand(5);
    const unsigned expected[] = {static_cast<unsigned>(std::rand()), static_cast<unsigned>(std::rand())};
    std::srand(5);
    EXPECT_EQ(workspace->getRand(), expected[0]);
    EXPECT_EQ(workspace->getRand(), expected[1]);
}

TEST_F(TemporaryDirNames, SecondDeviceIsOpenedOnlyWhenTheFirstCannotBe) {
    {
        const OpenRule other(kOtherRandomDevice);
        make();
        EXPECT_EQ(other.count(), 0);
    }
    const OpenRule missing(kRandomDevice, ENOENT);
    const OpenRule zeros(kOtherRandomDevice, "/dev/zero");
    EXPECT_EQ(make()->getRand(), 0U);
    EXPECT_EQ(zeros.count(), 1);
}

TEST_F(TemporaryDirNames, WithoutARandomDeviceTheGeneratorServes) {
    const OpenRule missing(kRandomDevice, ENOENT);
    const OpenRule denied(kOtherRandomDevice, EACCES);
    const auto workspace = make();
    std::srand(9);
    const auto expected = static_cast<unsigned>(std::rand());
    std::srand(9);
    EXPECT_EQ(workspace->getRand(), expected);
    EXPECT_EQ(workspace->init(L"zav_"), 0);
    std::wstring path;
    EXPECT_EQ(workspace->getTmpFile(path, L"out_", L".xml"), 0);
    const std::string name = processIds() + "[0-9A-Za-y]{6,10}";
    EXPECT_TRUE(
        matches(workspace->WStringToString(workspace->getBasePath()), ".*/zav_" + name + "_[0-9]{2}"));
    EXPECT_TRUE(matches(workspace->WStringToString(path), ".*/out_" + name + ".xml_[0-9]{2}"));
}

}  // namespace
}  // namespace zav::test
