#include "cli/terminal/Terminal.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/EnvironmentVariable.h"

namespace zavcli {
namespace {

TEST(Terminal, ColumnsAreTakenFromTheEnvironmentWithoutATerminal) {
    const struct {
        std::optional<std::string> value;
        int columns;
    } cases[] = {{"132", 132}, {"10", 40},    {std::nullopt, 100}, {"", 100},
                 {"-5", 100},  {"wide", 100}, {"0", 100}};
    for (const auto& [value, columns] : cases) {
        const zavtest::EnvironmentVariable variable("COLUMNS", value);
        EXPECT_EQ(columns, terminalColumns(-1)) << value.value_or("none");
    }
}

}  // namespace
}  // namespace zavcli
