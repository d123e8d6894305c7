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

TEST(GroupListWriter, CsvOfFieldsHasARecordPerField) {
    static constexpr schema::Field fields[] = {
        {.name = "DeviceID", .key = true, .meaning = "name, `cpu0`"},
        {.name = "Clock",
         .type = schema::Type::Count,
         .unit = "MHz",
         .isVolatile = true,
         .access = schema::Access::RootOnly,
         .meaning = "frequency"},
    };
    const schema::Group group{
        .id = 2, .name = "Some Thing", .element = "SomeThing", .about = "", .fields = fields};
    EXPECT_EQ(
        "group,field,type,unit,list,key,volatile,access,privacy,meaning\r\n"
        "SomeThing,DeviceID,text,,false,true,false,everyone,public,\"name, `cpu0`\"\r\n"
        "SomeThing,Clock,count,MHz,false,false,true,root-only,public,frequency\r\n",
        fieldCsv({&group}));
}

TEST(GroupListWriter, JsonOfNoGroupsIsAnEmptyArray) {
    EXPECT_EQ("{\n  \"groups\": []\n}\n", groupJson({}));
}

}  // namespace
}  // namespace zavcli
