#include "toolkit/machine/packages/SnapDatabase.h"

#include <gtest/gtest.h>

#include <string>

namespace toolkit {
namespace {

TEST(SnapMeta, ScalarsOfAllKindsAreRead) {
    const struct {
        const char* text;
        const char* version;
    } kCases[] = {
        {"version: 20230801", "20230801"},
        {"version: '2.63'\n", "2.63"},
        {"version: \"1 \\\"a\\\" 2\"\n", "1 \"a\" 2"},
        {"version: 'it''s'\n", "it's"},
        {"version: 1.2 # note\n", "1.2"},
        {"version: |\n  3.4\n  5\n", "3.4"},
        {"version: >-\n  3.4\n", "3.4"},
        {"version:\r\n", ""},
        {"version: # none\n", ""},
        {"version: 'cut", "cut"},
        {"version: \"", ""},
        {"version: \"\\", "\\"},
        {"version", ""},
        {"  version: 7\n", ""},
        {"apps:\n  version: 7\n", ""},
        {"", ""},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.version, readSnapMeta(test.text).version) << test.text;
}

TEST(SnapMeta, ArchitecturesAreJoinedFromEitherKindOfList) {
    EXPECT_EQ("amd64;i386", readSnapMeta("architectures:\n- amd64\n- i386\nname: x\n").architectures);
    EXPECT_EQ("amd64;i386", readSnapMeta("architectures:\n  - amd64\n  - 'i386'\n").architectures);
    EXPECT_EQ("amd64;i386", readSnapMeta("architectures: [amd64, i386]\n").architectures);
    EXPECT_EQ("amd64", readSnapMeta("architectures: [amd64").architectures);
    EXPECT_EQ("", readSnapMeta("architectures: []\n").architectures);
    EXPECT_EQ("all", readSnapMeta("architectures: all\n").architectures);
}

TEST(SnapMeta, ListsOfOtherKeysAreIgnored) {
    const SnapMeta meta = readSnapMeta("name: core\nplugs:\n- name: y\nsummary: runtime\nassumes: [a]\n");
    EXPECT_EQ("core", meta.name);
    EXPECT_EQ("runtime", meta.summary);
    EXPECT_EQ("", meta.architectures);
}

}  // namespace
}  // namespace toolkit
