#include "cli/formats/GroupListWriter.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(GroupListWriter, WritesEveryFormat) {
    const std::vector<ListedGroup> two{{{2, "Processor"}, {GroupState::Complete, ""}},
                                       {{44, "PhysicalProcessor"}, {}}};
    EXPECT_EQ("id  name\n 2  Processor\n44  PhysicalProcessor\n", groupTable(two));
    EXPECT_EQ("id,name,status\r\n2,Processor,gathered\r\n44,PhysicalProcessor,unknown\r\n", groupCsv(two));
    EXPECT_EQ(
        "{\n  \"groups\": [\n    {\n      \"id\": 2,\n      \"name\": \"Processor\",\n      \"status\": "
        "\"gathered\"\n    }\n  ]\n}\n",
        groupJson({two.front()}));
}

TEST(GroupListWriter, GroupsThatTheScannerDoesNotGatherAreMarked) {
    const std::vector<ListedGroup> groups{{{2, "Processor"}, {GroupState::Complete, ""}},
                                          {{14, "Printer"}, {GroupState::Unsupported, ""}},
                                          {{40, "WinCluster"}, {GroupState::NotApplicable, "windows"}}};
    EXPECT_EQ(
        "id  name\n 2  Processor\n14  Printer     not implemented by this scanner\n"
        "40  WinCluster  not applicable here: Windows only\n",
        groupTable(groups));
    EXPECT_EQ(
        "id,name,status\r\n2,Processor,gathered\r\n14,Printer,unsupported\r\n40,WinCluster,not-"
        "applicable\r\n",
        groupCsv(groups));
    EXPECT_NE(std::string::npos,
              groupJson(groups).find("\"status\": \"not-applicable\",\n      \"reason\": \"windows\""));
}

TEST(GroupListWriter, JsonOfNoGroupsIsAnEmptyArray) {
    EXPECT_EQ("{\n  \"groups\": []\n}\n", groupJson({}));
}

}  // namespace
}  // namespace zavcli
