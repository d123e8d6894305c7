#include "cli/formats/XmlWriter.h"

#include <gtest/gtest.h>

#include "tests/cli/Samples.h"
#include "tests/cli/XmlReader.h"

namespace zavcli {
namespace {

TEST(XmlWriter, InstancesAreElementsNamedAfterTheirGroup) {
    const auto instances = zavtest::readXml(xmlText(zavtest::sampleInventory()));
    ASSERT_TRUE(instances);
    ASSERT_EQ(4U, instances->size());
    EXPECT_EQ("Processor", instances->at(0).group);
    EXPECT_EQ("Processor", instances->at(1).group);
    EXPECT_EQ("Memory", instances->at(2).group);
    EXPECT_EQ("Monitor", instances->at(3).group);
    EXPECT_TRUE(instances->at(3).fields.empty());
}

TEST(XmlWriter, FieldsKeepNamesValuesAndOrder) {
    const auto instances = zavtest::readXml(xmlText(zavtest::sampleInventory()));
    ASSERT_TRUE(instances);
    const Instance& fields = instances->at(0).fields;
    ASSERT_EQ(2U, fields.size());
    EXPECT_EQ("DeviceID", fields[0].name);
    EXPECT_EQ("cpu0", fields[0].value);
    EXPECT_EQ("Name", fields[1].name);
    EXPECT_EQ("A, \"B\" & <C>", fields[1].value);
    EXPECT_EQ("gr\xc3\xb6\xc3\x9f\xf0\x9f\x98\x80", instances->at(2).fields.at(1).value);
}

TEST(XmlWriter, OddValuesSurviveARoundTripExceptWhatXmlCannotRepresent) {
    const HardwareInventory odd = zavtest::oddInventory();
    const auto instances = zavtest::readXml(xmlText(odd));
    ASSERT_TRUE(instances);
    const Instance& expected = odd.groups[0].instances[0];
    const Instance& fields = instances->at(0).fields;
    ASSERT_EQ(expected.size(), fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const bool carried = expected[i].name != "Escape";
        EXPECT_EQ(carried ? expected[i].value : "\xef\xbf\xbd[31m\xef\xbf\xbd", fields[i].value)
            << expected[i].name;
    }
}

TEST(XmlWriter, EmptyInventoryIsADocument) {
    const auto instances = zavtest::readXml(xmlText(HardwareInventory()));
    ASSERT_TRUE(instances);
    EXPECT_TRUE(instances->empty());
}

}  // namespace
}  // namespace zavcli
