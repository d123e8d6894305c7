#include "cli/scan/Xml.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(XmlElement, DeepNestingIsRefused) {
    const auto nested = [](int depth) {
        std::string xml;
        for (int i = 0; i < depth; ++i) xml += "<a>";
        for (int i = 0; i < depth; ++i) xml += "</a>";
        return xml;
    };
    EXPECT_TRUE(readXmlElement(nested(100)));
    EXPECT_FALSE(readXmlElement(nested(101)));
    EXPECT_FALSE(readXmlElement(nested(1'000'000)));
}

}  // namespace
}  // namespace zavcli
