#include "toolkit/quorvis/report/OutputBound.h"

#include <gtest/gtest.h>

#include <string>

namespace toolkit::quorvis {
namespace {

TEST(OutputBound, AdmitsUntilAReadersTreeWouldBeTooLarge) {
    OutputBound bound;
    const std::string large(std::size_t{1} << 20, 'x');
    std::size_t admitted = 0;
    while (bound.admits(large)) ++admitted;
    EXPECT_GE(admitted, 100U);
    EXPECT_LE(admitted, 256U);
    EXPECT_TRUE(bound.admits(""));
}

TEST(OutputBound, SmallElementsCountForWhatTheirNodesTake) {
    OutputBound bound;
    std::string small;
    for (int i = 0; i < 1'000; ++i) small += "<a/>";
    std::size_t admitted = 0;
    while (bound.admits(small)) ++admitted;
    EXPECT_LE(admitted, 8'000U);
}

}  // namespace
}  // namespace toolkit::quorvis
