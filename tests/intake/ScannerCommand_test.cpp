#include "intake/ScannerCommand.h"

#include <gtest/gtest.h>

namespace zav {
namespace {

using Arguments = std::vector<std::string>;

TEST(ScannerCommand, HasALineAndAListOfArguments) {
    ScannerCommand command(L"/opt/t/quorvah");
    command.add(L"-c", L"/w/config.xml").add(L"-o", L"/w/out.xml");
    EXPECT_EQ(command.line(), L"/opt/t/quorvah -c \"/w/config.xml\" -o \"/w/out.xml\"");
    EXPECT_EQ(command.arguments(), (Arguments{"/opt/t/quorvah", "-c", "/w/config.xml", "-o", "/w/out.xml"}));
}

TEST(ScannerCommand, AFileIsOneArgumentWhateverItContains) {
    const struct {
        std::wstring file;
        std::string argument;
    } cases[] = {
        {L"", ""},
        {L" ", " "},
        {L"a b\tc", "a b\tc"},
        {L"\"", "\""},
        {L"x\" -o \"/etc/passwd", "x\" -o \"/etc/passwd"},
        {L"-o", "-o"},
        {L"--root=/", "--root=/"},
        {L"a\\\"b", "a\\\"b"},
        {L"\x20AC\xE4", "\xAC\xE4"},
        {std::wstring(L"a\x100"
                      L"b"),
         std::string("a\0b", 3)},
    };
    for (const auto& each : cases) {
        ScannerCommand command(L"/q");
        command.add(L"-i", each.file);
        EXPECT_EQ(command.arguments(), (Arguments{"/q", "-i", each.argument})) << each.argument;
        EXPECT_EQ(command.line(), L"/q -i \"" + each.file + L"\"") << each.argument;
    }
}

TEST(ScannerCommand, TheProgramIsSplitAtBlanksAndItsQuotesGroup) {
    const struct {
        const wchar_t* program;
        Arguments arguments;
    } cases[] = {
        {L"", {"-c", "x"}},
        {L"  ", {"-c", "x"}},
        {L"/in stalled/quorvah", {"/in", "stalled/quorvah", "-c", "x"}},
        {L"/\"in stalled\"/quorvah", {"/in stalled/quorvah", "-c", "x"}},
        {L"/a\"b/quorvah", {"/ab/quorvah", "-c", "x"}},
    };
    for (const auto& each : cases) {
        ScannerCommand command(each.program);
        command.add(L"-c", L"x");
        EXPECT_EQ(command.arguments(), each.arguments);
        EXPECT_EQ(command.line(), std::wstring(each.program) + L" -c \"x\"");
    }
}

}  // namespace
}  // namespace zav
