#include "toolkit/quorvah/report/OutputDocument.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace toolkit::quorvah {
namespace {

constexpr schema::Field kFields[] = {{"DeviceID"}, {"Name"}};
constexpr Group kGroup{"Some Thing", "SomeThing", kFields, nullptr};

std::string documentOf(const std::vector<GroupResult>& results, bool pretty) {
    std::string document;
    writeDocument(results, pretty, [&](std::string_view piece) { document += piece; });
    return document;
}

GroupResult unrendered(GroupData&& data) {
    GroupResult result = resultWithoutXml(data);
    result.data = std::make_shared<const GroupData>(std::move(data));
    return result;
}

std::string documentOf(const GroupData& data, bool pretty) {
    return documentOf({render(data, pretty)}, pretty);
}

TEST(OutputDocument, HasNoWhiteSpaceBetweenElements) {
    GroupData data(kGroup);
    data.add("a").set("Name", "x & y");
    data.add("b");
    EXPECT_EQ(documentOf(data, false), R"(<?xml version="1.0" encoding="UTF-8"?><Hardware>)"
                                       "<SomeThing><DeviceID>a</DeviceID><Name>x &amp; y</Name></SomeThing>"
                                       "<SomeThing><DeviceID>b</DeviceID><Name/></SomeThing></Hardware>");
}

TEST(OutputDocument, IndentsLinesIfPretty) {
    GroupData data(kGroup);
    data.add("a");
    EXPECT_EQ(documentOf(data, true),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Hardware>\n"
              "  <SomeThing>\n"
              "    <DeviceID>a</DeviceID>\n"
              "    <Name/>\n"
              "  </SomeThing>\n"
              "</Hardware>\n");
}

TEST(OutputDocument, WithoutInstancesIsAnEmptyRoot) {
    EXPECT_EQ(documentOf(std::vector<GroupResult>(), false),
              R"(<?xml version="1.0" encoding="UTF-8"?><Hardware></Hardware>)");
    EXPECT_EQ(documentOf(GroupData(kGroup), false), documentOf(std::vector<GroupResult>(), false));
}

TEST(OutputDocument, DoesNotDependOnWhereGroupsAreRendered) {
    constexpr int kInstances = 3000;  // exceeds a block of text
    const auto fill = [](GroupData& data) {
        for (int i = 0; i < kInstances; ++i) data.add(std::to_string(i)).set("Name", std::string(90, '<'));
    };
    for (const bool pretty : {false, true}) {
        std::vector<GroupResult> early;
        std::vector<GroupResult> late;
        for (int group = 0; group < 3; ++group) {
            GroupData data(kGroup);
            if (group != 1) fill(data);
            early.push_back(render(data, pretty));
            late.push_back(unrendered(std::move(data)));
        }
        EXPECT_EQ(late.back().instances, std::size_t{kInstances});
        const std::string document = documentOf(early, pretty);
        EXPECT_TRUE(document == documentOf(late, pretty));
        std::swap(early[0], late[0]);
        EXPECT_TRUE(document == documentOf(early, pretty));
        EXPECT_TRUE(document == documentOf(late, pretty));
    }
}

}  // namespace
}  // namespace toolkit::quorvah
