#include "kest/ErrorText.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace kest {
namespace {

TEST(ErrorText, ContainsNameAndMeaning) {
    const struct {
        int error;
        const char* text;
    } cases[] = {
        {EACCES, "EACCES (permission denied)"},    {ENOENT, "ENOENT (no such file or directory)"},
        {ENOEXEC, "ENOEXEC (exec format error)"},  {EIO, "EIO (input/output error)"},
        {EDOTDOT, "EDOTDOT (RFS specific error)"},
    };
    for (const auto& each : cases) EXPECT_EQ(errorText(each.error), each.text);
}

TEST(ErrorText, AnUnknownNumberIsPrinted) {
    EXPECT_EQ(errorText(-1), "error -1");
    EXPECT_EQ(errorText(99999), "error 99999");
}

}  // namespace
}  // namespace kest
