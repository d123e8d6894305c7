// Compares docs/hardware-groups.md with the groups.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "toolkit/quorvah/groups/GroupTable.h"

namespace toolkit::quorvah {
namespace {

struct Row {
    std::string field;
    std::string meaning;
};

// The rows of the page's tables, by the names of the groups in the headings.
std::map<std::string, std::vector<Row>> groupsOfPage() {
    std::map<std::string, std::vector<Row>> groups;
    std::vector<Row>* rows = nullptr;
    std::ifstream page(QUORVAH_GROUPS_PAGE);
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("## ")) rows = &groups[line.substr(line.rfind(' ') + 1)];
        if (rows == nullptr || !line.starts_with("| ") || line.starts_with("| field ")) continue;
        const std::size_t end = line.find(" |");
        rows->push_back({line.substr(2, end - 2), line.substr(end + 3)});
    }
    return groups;
}

TEST(GroupsPage, ListsTheFieldsOfEveryGatheredGroup) {
    std::map<std::string, std::vector<Row>> page = groupsOfPage();
    for (const Group* const group : allGroups()) {
        if (group->gather == nullptr) continue;
        std::vector<std::string> fields;
        for (const schema::Field& field : group->fields) fields.emplace_back(field.name);
        std::vector<std::string> listed;
        for (const Row& row : page[group->xmlName]) listed.push_back(row.field);
        EXPECT_EQ(listed, fields) << group->xmlName;
        page.erase(group->xmlName);
    }
    for (const auto& [name, rows] : page) ADD_FAILURE() << name << " is not gathered";
}

TEST(GroupsPage, MarksTheVolatileFields) {
    std::map<std::string, std::vector<Row>> page = groupsOfPage();
    for (const Group* const group : allGroups()) {
        const std::vector<Row>& rows = page[group->xmlName];
        for (std::size_t i = 0; i < std::min(rows.size(), group->fields.size()); ++i) {
            const bool marked = rows[i].meaning.find("changes") != std::string::npos;
            const bool isVolatile = group->fields[i].isVolatile;
            EXPECT_EQ(marked, isVolatile) << group->xmlName << " " << rows[i].field;
        }
    }
}

}  // namespace
}  // namespace toolkit::quorvah
