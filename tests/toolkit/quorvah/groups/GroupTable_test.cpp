#include "toolkit/quorvah/groups/GroupTable.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "schema/Catalogue.h"

namespace toolkit::quorvah {
namespace {

TEST(GroupTable, HoldsEveryGroupOnce) {
    std::set<std::string> names;
    for (const Group* const group : allGroups()) names.insert(group->xmlName);
    EXPECT_EQ(names.size(), 48U);
    EXPECT_EQ(allGroups().size(), 48U);
}

TEST(GroupTable, XmlNamesAreDisplayNamesWithoutBlanks) {
    for (const Group* const group : allGroups()) {
        std::string name = group->displayName;
        std::erase(name, ' ');
        EXPECT_EQ(name, group->xmlName);
    }
}

TEST(GroupTable, FindsAGroupByBothOfItsNames) {
    for (const Group* const group : allGroups()) {
        EXPECT_EQ(findGroup(group->displayName), group);
        EXPECT_EQ(findGroup(group->xmlName), group);
    }
}

TEST(GroupTable, AgreesWithTheCatalogue) {
    ASSERT_EQ(schema::allGroups().size(), allGroups().size());
    for (std::size_t i = 0; i < allGroups().size(); ++i) {
        const Group& group = *allGroups()[i];
        const schema::Group& described = *schema::allGroups()[i];
        EXPECT_EQ(described.name, group.displayName);
        EXPECT_EQ(described.element, group.xmlName);
        EXPECT_EQ(described.fields.data(), group.fields.data()) << group.xmlName;
        EXPECT_EQ(described.notOnLinux, group.otherPlatform == nullptr ? "" : group.otherPlatform);
    }
}

TEST(GroupTable, FindsNothingByAnyOtherName) {
    for (const char* const name :
         {"", "processor", "Processor ", "Operating  System", "Processo", "NoSuchGroup"}) {
        EXPECT_EQ(findGroup(name), nullptr) << name;
    }
}

TEST(GroupTable, FieldNamesAreXmlNamesAndUniqueInTheirGroup) {
    for (const Group* const group : allGroups()) {
        std::set<std::string> names;
        for (const schema::Field& field : group->fields) {
            const std::string name(field.name);
            EXPECT_TRUE(names.insert(name).second) << group->xmlName << " " << name;
            EXPECT_FALSE(name.empty());
            EXPECT_TRUE(std::isalpha(static_cast<unsigned char>(name.front())) != 0) << name;
            EXPECT_EQ(
                name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
                std::string::npos)
                << name;
        }
    }
}

TEST(GroupTable, AGatheredGroupHasAKeyThatIsNotVolatile) {
    for (const Group* const group : allGroups()) {
        if (group->gather == nullptr) continue;
        ASSERT_FALSE(group->fields.empty()) << group->xmlName;
        EXPECT_FALSE(group->fields.front().isVolatile) << group->xmlName;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
