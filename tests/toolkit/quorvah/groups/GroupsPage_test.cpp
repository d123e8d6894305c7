// The page that lists the groups' fields, against the groups.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "toolkit/quorvah/groups/GroupTable.h"

namespace toolkit::quorvah {
namespace {

using Fields = std::vector<std::string>;

// The fields that stand in the first columns of the page's tables, by the names of the groups in the headings.
std::map<std::string, Fields> groupsOfPage() {
    std::map<std::string, Fields> groups;
    Fields* fields = nullptr;
    std::ifstream page(QUORVAH_GROUPS_PAGE);
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("## ")) fields = &groups[line.substr(line.rfind(' ') + 1)];
        if (fields == nullptr || !line.starts_with("| ") || line.starts_with("| field ")) continue;
        fields->push_back(line.substr(2, line.find(" |") - 2));
    }
    return groups;
}

TEST(GroupsPage, ListsTheFieldsOfEveryGroupThatIsGathered) {
    std::map<std::string, Fields> page = groupsOfPage();
    for (const Group* const group : allGroups()) {
        if (group->gather == nullptr) continue;
        Fields fields;
        for (const FieldDef& field : group->fields) fields.emplace_back(field.name);
        EXPECT_EQ(page[group->xmlName], fields) << group->xmlName;
        page.erase(group->xmlName);
    }
    for (const auto& [name, fields] : page) ADD_FAILURE() << name << " is not gathered";
}

}  // namespace
}  // namespace toolkit::quorvah
