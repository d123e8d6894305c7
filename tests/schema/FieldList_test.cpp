#include "schema/FieldList.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "schema/Catalogue.h"

namespace schema {
namespace {

constexpr Field kFields[] = {
    {.name = "DeviceID", .key = true, .meaning = "name", .source = "/dev"},
    {.name = "Kind", .type = Type::Choice, .choices = "HDD|SSD", .meaning = "kind", .source = "queue"},
    {.name = "Free",
     .type = Type::Count,
     .unit = "KiB",
     .isVolatile = true,
     .access = Access::RootOnly,
     .liveOnly = true,
     .meaning = "free space",
     .source = "statvfs"},
    {.name = "Hosts",
     .list = true,
     .privacy = Privacy::Address,
     .access = Access::RootSeesMore,
     .meaning = "hosts",
     .source = "/etc/hosts"},
};
constexpr Group kThing{
    .id = 5, .name = "Some Thing", .element = "SomeThing", .about = "Things.\n\nMore.", .fields = kFields};
constexpr Group kNothing{
    .id = 6, .name = "None", .element = "None", .about = "None.", .notOnLinux = "windows"};
constexpr const Group* kGroups[] = {&kThing, &kNothing};

TEST(FieldList, TheTextHasALinePerField) {
    EXPECT_EQ(
        "5 Some Thing\n"
        "  Things.\n"
        "  DeviceID  name (text; key) [/dev]\n"
        "  Kind      kind (choice HDD|SSD) [queue]\n"
        "  Free      free space (count, KiB; changes; root only; not in a tree) [statvfs]\n"
        "  Hosts     hosts (text list; root sees more; hashed by --sanitize) [/etc/hosts]\n"
        "\n"
        "6 None\n"
        "  None.\n"
        "  No Linux machine has this group.\n",
        fieldText(kGroups));
}

TEST(FieldList, TheJsonHasAllPropertiesOfAField) {
    const auto json = nlohmann::json::parse(fieldJson(kGroups));
    EXPECT_EQ(kVersion, json["schemaVersion"].get<std::string>());
    ASSERT_EQ(2U, json["groups"].size());
    const auto& thing = json["groups"][0];
    EXPECT_EQ(5, thing["id"]);
    EXPECT_EQ("Some Thing", thing["name"]);
    EXPECT_EQ("SomeThing", thing["element"]);
    EXPECT_EQ("Things.\n\nMore.", thing["about"]);
    EXPECT_FALSE(thing.contains("notOnLinux"));
    EXPECT_EQ("windows", json["groups"][1]["notOnLinux"]);
    const auto& fields = thing["fields"];
    EXPECT_EQ(true, fields[0]["key"]);
    EXPECT_EQ((std::vector<std::string>{"HDD", "SSD"}), fields[1]["choices"].get<std::vector<std::string>>());
    EXPECT_FALSE(fields[0].contains("choices"));
    const nlohmann::json free = {
        {"name", "Free"},   {"type", "count"},       {"unit", "KiB"},           {"list", false},
        {"key", false},     {"volatile", true},      {"privacy", "public"},     {"access", "root-only"},
        {"liveOnly", true}, {"liveSeesMore", false}, {"meaning", "free space"}, {"source", "statvfs"}};
    EXPECT_EQ(free, fields[2]);
    EXPECT_EQ("address", fields[3]["privacy"]);
    EXPECT_EQ("root-sees-more", fields[3]["access"]);
    EXPECT_EQ(true, fields[3]["list"]);
}

}  // namespace
}  // namespace schema
