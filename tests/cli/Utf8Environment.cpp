// Text is UTF-8 in the tests as it is in the command.
#include <gtest/gtest.h>

#include "cli/terminal/Text.h"

namespace {

class Utf8Environment : public testing::Environment {
    void SetUp() override { zavcli::useUtf8(); }
};

const testing::Environment* const kEnvironment = testing::AddGlobalTestEnvironment(new Utf8Environment);

}  // namespace
