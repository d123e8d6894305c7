#include "cli/formats/CsvWriter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/cli/CsvReader.h"
#include "tests/cli/Samples.h"

namespace zavcli {
namespace {

using Records = std::vector<zavtest::CsvRecord>;

TEST(CsvWriter, FieldsAreQuotedOnlyWhereNeeded) {
    const struct {
        const char* value;
        const char* written;
    } cases[] = {
        {"", ""},           {"plain", "plain"},   {"a b", "a b"},       {"a,b", "\"a,b\""},
        {"\"", "\"\"\"\""}, {"a\nb", "\"a\nb\""}, {"a\rb", "\"a\rb\""}, {"'", "'"},
    };
    for (const auto& [value, written] : cases) EXPECT_EQ(written, csvField(value));
}

TEST(CsvWriter, FormulasAreProtectedAndNumbersAreNot) {
    const struct {
        const char* value;
        const char* written;
    } cases[] = {
        {"=1+1", "'=1+1"},
        {"+cmd", "'+cmd"},
        {"-x", "'-x"},
        {"@SUM(A1)", "'@SUM(A1)"},
        {"\t=1", "'\t=1"},
        {"\r", "\"'\r\""},
        {"\x01", "'\x01"},
        {"-5", "-5"},
        {"+3.25", "+3.25"},
        {"-1e9", "-1e9"},
        {"-5+cmd", "'-5+cmd"},
        {"--5", "'--5"},
        {"-", "'-"},
        {"-inf", "'-inf"},
        {"'=1", "''=1"},
        {"'", "'"},
        {"'plain", "'plain"},
        {"a=1", "a=1"},
        {"", ""},
        {"=\"a\"", "\"'=\"\"a\"\"\""},
        {"gr\xc3\xb6", "gr\xc3\xb6"},
    };
    for (const auto& [value, written] : cases) {
        EXPECT_EQ(written, csvValue(value, CsvFormulas::Protected)) << value;
        EXPECT_EQ(csvField(value), csvValue(value, CsvFormulas::Raw)) << value;
    }
}

TEST(CsvWriter, OneRecordPerFieldOfEveryInstance) {
    EXPECT_EQ((Records{{"group", "instance", "field", "value"},
                       {"Processor", "", "_status", "unknown"},
                       {"Processor", "0", "DeviceID", "cpu0"},
                       {"Processor", "0", "Name", "A, \"B\" & <C>"},
                       {"Processor", "1", "DeviceID", "cpu1"},
                       {"Processor", "1", "Name", ""},
                       {"Memory", "", "_status", "unknown"},
                       {"Memory", "0", "DeviceID", "memory"},
                       {"Memory", "0", "Note", "gr\xc3\xb6\xc3\x9f\xf0\x9f\x98\x80"},
                       {"Modem", "", "_status", "unknown"},
                       {"Monitor", "", "_status", "unknown"}}),
              zavtest::readCsv(csvText(zavtest::sampleInventory())));
}

TEST(CsvWriter, OddValuesSurviveARoundTrip) {
    HardwareInventory odd = zavtest::oddInventory();
    const Records table = zavtest::readCsv(csvText(odd, CsvFormulas::Raw));
    odd.groups.push_back({30, "Modem", {}, {}});
    const Records records = zavtest::readCsv(csvText(odd, CsvFormulas::Raw));
    const Instance& instance = odd.groups[0].instances[0];
    ASSERT_EQ(instance.size() + 3, records.size());
    ASSERT_EQ(2U, table.size()) << "one group is a table";
    for (std::size_t i = 0; i < instance.size(); ++i)
        EXPECT_EQ((zavtest::CsvRecord{"Memory", "0", instance[i].name, instance[i].value}), records[i + 2]);
    for (const Field& field : instance) {
        const auto column = std::find(table[0].begin(), table[0].end(), field.name) - table[0].begin();
        ASSERT_LT(static_cast<std::size_t>(column), table[0].size()) << field.name;
        EXPECT_EQ(field.value, table[1][static_cast<std::size_t>(column)]);
    }
}

TEST(CsvWriter, StatusOfEachGroupIsWritten) {
    HardwareInventory inventory;
    inventory.groups = {{30, "Modem", {}, {GroupState::Complete, ""}},
                        {25, "SoftwarePackages", {}, {GroupState::Unread, "rpm-broken"}}};
    EXPECT_EQ((Records{{"group", "instance", "field", "value"},
                       {"Modem", "", "_status", "complete"},
                       {"SoftwarePackages", "", "_status", "unread"},
                       {"SoftwarePackages", "", "_reason", "rpm-broken"}}),
              zavtest::readCsv(csvText(inventory)));
}

TEST(CsvWriter, EmptyInventoryIsOnlyTheHeader) {
    EXPECT_EQ("group,instance,field,value\r\n", csvText(HardwareInventory()));
}

}  // namespace
}  // namespace zavcli
