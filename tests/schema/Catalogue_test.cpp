#include "schema/Catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace schema {
namespace {

TEST(Catalogue, HoldsEveryGroupOnceInTheOrderOfTheNumbers) {
    EXPECT_EQ(48U, allGroups().size());
    std::set<std::string_view> names;
    int last = 0;
    for (const Group* const group : allGroups()) {
        EXPECT_GT(group->id, last) << group->name;
        last = group->id;
        names.insert(group->name);
        names.insert(group->element);
        EXPECT_EQ(group, findGroup(group->name));
        EXPECT_EQ(group, findGroup(group->element));
    }
    EXPECT_GE(names.size(), 48U);
    EXPECT_EQ(nullptr, findGroup("processor"));
    EXPECT_EQ(nullptr, findGroup(""));
}

TEST(Catalogue, AGroupHasFieldsUnlessNoLinuxMachineHasIt) {
    for (const Group* const group : allGroups())
        EXPECT_NE(group->fields.empty(), group->notOnLinux.empty()) << group->name;
}

TEST(Catalogue, FindsTheFieldsOfAGroup) {
    const Group& storage = *findGroup("Storage");
    for (const Field& field : storage.fields) EXPECT_EQ(&field, findField(storage, field.name));
    EXPECT_EQ(nullptr, findField(storage, "size"));
    EXPECT_EQ(nullptr, findField(storage, ""));
}

TEST(Catalogue, EveryGroupAndFieldIsDescribed) {
    for (const Group* const group : allGroups()) {
        EXPECT_TRUE(group->about.ends_with('.')) << group->name;
        for (const Field& field : group->fields) {
            EXPECT_FALSE(field.meaning.empty()) << group->name << " " << field.name;
            EXPECT_FALSE(field.source.empty()) << group->name << " " << field.name;
        }
    }
}

TEST(Catalogue, OnlyAFieldWithAChoiceHasChoices) {
    for (const Group* const group : allGroups()) {
        for (const Field& field : group->fields)
            EXPECT_EQ(field.type == Type::Choice, !field.choices.empty()) << group->name << " " << field.name;
    }
}

TEST(Catalogue, OnlyANumberHasAUnit) {
    for (const Group* const group : allGroups()) {
        for (const Field& field : group->fields) {
            const bool number =
                field.type == Type::Count || field.type == Type::Integer || field.type == Type::Decimal;
            EXPECT_TRUE(number || field.unit.empty()) << group->name << " " << field.name;
        }
    }
}

TEST(Catalogue, EveryGroupHasColumnsThatFitAnOldTerminal) {
    constexpr std::size_t kWidth = 78;  // 80 less the indentation
    constexpr std::size_t kGap = 2;
    for (const Group* const group : allGroups()) {
        if (group->fields.empty()) continue;
        std::istringstream columns{std::string(group->columns)};
        std::size_t width = 0;
        for (std::string name; columns >> name; width += name.size() + kGap)
            EXPECT_NE(nullptr, findField(*group, name)) << group->name << " " << name;
        EXPECT_GT(width, 0U) << group->name;
        EXPECT_LE(width, kWidth + kGap) << group->name;
    }
}

TEST(Catalogue, OnlyBytesAreCountedInPowersOfTwo) {
    for (const Group* const group : allGroups()) {
        for (const Field& field : group->fields)
            EXPECT_TRUE(!field.binary || field.unit == "bytes") << group->name << " " << field.name;
    }
}

TEST(Catalogue, AKeyIsNeitherVolatileNorUnknownInATree) {
    for (const Group* const group : allGroups()) {
        for (const Field& field : group->fields) {
            EXPECT_FALSE(field.key && (field.isVolatile || field.liveOnly))
                << group->name << " " << field.name;
        }
    }
}

// Hosts look fields up by these names.
TEST(Catalogue, HasAllNamesThatItEverHad) {
    std::ifstream names(ZAV_SCHEMA_NAMES);
    int count = 0;
    for (std::string name, fieldName; names >> name >> fieldName; ++count) {
        const Group* const group = findGroup(name);
        ASSERT_NE(nullptr, group) << name;
        EXPECT_NE(nullptr, findField(*group, fieldName)) << name << " " << fieldName;
    }
    EXPECT_GE(count, 557);
}

TEST(Catalogue, HasNoNameThatTheListOfNamesLacks) {
    std::ifstream names(ZAV_SCHEMA_NAMES);
    std::set<std::string> listed;
    for (std::string name, field; names >> name >> field;) listed.insert(name + " " + field);
    for (const Group* const group : allGroups()) {
        for (const Field& field : group->fields) {
            const std::string name = std::string(group->element) + " " + std::string(field.name);
            EXPECT_TRUE(listed.contains(name)) << "add a line to " << ZAV_SCHEMA_NAMES << ": " << name;
        }
    }
}

}  // namespace
}  // namespace schema
