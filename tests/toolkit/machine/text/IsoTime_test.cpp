#include "toolkit/machine/text/IsoTime.h"

#include <gtest/gtest.h>

namespace toolkit {
namespace {

TEST(IsoTime, SecondsBecomeDates) {
    const struct {
        std::int64_t seconds;
        const char* text;
    } kCases[] = {
        {0, "1970-01-01T00:00:00Z"},
        {1795241685, "2026-11-21T06:14:45Z"},
        {-1, "1969-12-31T23:59:59Z"},
        {951782400, "2000-02-29T00:00:00Z"},
        {253402300799, "9999-12-31T23:59:59Z"},
        {253402300800, ""},
        {INT64_MAX, ""},
        {INT64_MIN, ""},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.text, isoTime(test.seconds)) << test.seconds;
}

}  // namespace
}  // namespace toolkit
