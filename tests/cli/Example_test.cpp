// Runs the example program of the documentation.
#include <gtest/gtest.h>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

Process example(std::vector<std::string> arguments) {
    return Process(std::move(arguments)).program(ZAVTEST_EXAMPLE);
}

TEST(Example, PrintsTheSystemAndTheProcessors) {
    const ScratchDir scratch;
    const std::string prepared = scratch.write("prepared.xml", kPreparedOutput).string();
    const Ended ended = example({scanner("copies")})
                            .environment("ZAVTEST_OUTPUT", prepared)
                            .environment("LC_ALL", "C.UTF-8")
                            .run();
    EXPECT_EQ(0, ended.status) << ended.err;
    for (const char* line :
         {"OperatingSystem 1\n", "  Name: linux\n", "  Caption: Gr\xc3\xb6\xc3\x9f \xf0\x9f\x98\x80\n",
          "Processor 1\n", "Processor 2\n", "  DeviceID: cpu1\n"})
        EXPECT_NE(std::string::npos, ended.out.find(line)) << line << ended.out;
}

TEST(Example, FailsWhenTheScannerFails) {
    const Ended ended = example({scanner("fails")}).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_NE(std::string::npos, ended.err.find("Exit code: 3 (ERROR)")) << ended.err;
}

TEST(Example, FailsWithoutAScanner) {
    EXPECT_EQ(1, example({"/no/such/place"}).run().status);
}

TEST(Example, FailsWithoutATemporaryDirectory) {
    EXPECT_EQ(1, example({scanner("copies")}).environment("TEMP", "/no/such/place").run().status);
}

}  // namespace
}  // namespace zavtest
