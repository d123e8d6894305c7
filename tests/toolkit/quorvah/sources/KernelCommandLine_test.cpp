#include "toolkit/quorvah/sources/KernelCommandLine.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(KernelCommandLine, TheLastParameterApplies) {
    const std::string_view line = "quiet root=/dev/sda1 x.root=no root=\"/dev/my disk\" rootwait";
    EXPECT_EQ(bootParameter(line, "root"), "/dev/my disk");
    EXPECT_EQ(bootParameter(line, "quiet"), "");
    EXPECT_EQ(bootParameter(line, "roo"), "");
    EXPECT_EQ(bootParameter("", "root"), "");
}

TEST(KernelCommandLine, SecretsAreReplaced) {
    const std::pair<const char*, const char*> cases[] = {
        {"a password=hunter2 b", "a password=*** b"},
        {"grub.PASSWD=x", "grub.PASSWD=***"},
        {"join_token=\"two words\" quiet", "join_token=*** quiet"},
        {"wpa.psk=a secret_key=b apikey=c", "wpa.psk=*** secret_key=*** apikey=***"},
        {"password", "password"},
        {"root=/dev/password", "root=/dev/password"},
        {"  a   b  ", "a b"},
        {"", ""},
    };
    for (const auto& [line, cut] : cases) EXPECT_EQ(withoutSecrets(line), cut) << line;
}

}  // namespace
}  // namespace toolkit::quorvah
