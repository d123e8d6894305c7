// Sets up UTF-8 conversions for all tests, as main() does for the command.
#include <gtest/gtest.h>

#include "cli/terminal/TextEncoding.h"

namespace {

class Utf8Environment : public testing::Environment {
    void SetUp() override { zavcli::useUtf8(); }
};

const testing::Environment* const kEnvironment = testing::AddGlobalTestEnvironment(new Utf8Environment);

}  // namespace
