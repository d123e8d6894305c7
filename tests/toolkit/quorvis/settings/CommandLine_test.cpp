#include "toolkit/quorvis/settings/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using toolkit::quorvis::Action;
using toolkit::quorvis::CommandLine;

namespace {

CommandLine parse(std::vector<std::string> arguments, const char* environmentRoot = nullptr) {
    arguments.insert(arguments.begin(), "quorvis");
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    return toolkit::quorvis::parseCommandLine(static_cast<int>(arguments.size()), pointers.data(),
                                              environmentRoot);
}

std::vector<std::string> complete(std::vector<std::string> more) {
    std::vector<std::string> arguments = {"-c", "c", "-o", "o", "-e", "e", "-i", "i"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

}  // namespace

TEST(SignatureScannerCommandLine, AcceptsShortAndLongOptions) {
    const std::vector<std::string> shortNames = complete({});
    const std::vector<std::string> longNames = {"--config",   "c", "--output=o",
                                                "--warnings", "e", "--signatures=i"};
    for (const auto& arguments : {shortNames, longNames}) {
        const CommandLine line = parse(arguments);
        EXPECT_EQ(line.action, Action::Scan) << line.message;
        EXPECT_EQ(line.options.config, "c");
        EXPECT_EQ(line.options.output, "o");
        EXPECT_EQ(line.options.warnings, "e");
        EXPECT_EQ(line.options.signatures, "i");
        EXPECT_EQ(line.options.root + line.options.explain, "");
    }
}

TEST(SignatureScannerCommandLine, AcceptsOptionalOptions) {
    const CommandLine line = parse(complete({"--root", "/tree", "--explain=GUID"}));
    EXPECT_EQ(line.action, Action::Scan);
    EXPECT_EQ(line.options.root, "/tree");
    EXPECT_EQ(line.options.explain, "GUID");
    EXPECT_EQ(parse({"--help"}).action, Action::Help);
    EXPECT_EQ(parse({"-V", "-c"}).action, Action::Version);
}

TEST(SignatureScannerCommandLine, CheckRequiresOnlyTheSignatures) {
    const CommandLine line = parse({"--check", "-i", "sig.xml"});
    EXPECT_EQ(line.action, Action::Check) << line.message;
    EXPECT_EQ(line.options.signatures, "sig.xml");
    EXPECT_EQ(parse({"--check"}).action, Action::Refuse);
}

TEST(SignatureScannerCommandLine, RefusalsNameTheOption) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "-i"},
        {{"--check"}, "-i"},
        {{"-o", "o", "-e", "e", "-i", "i"}, "-c"},
        {{"-c", "c", "-e", "e", "-i", "i"}, "-o"},
        {{"-c", "c", "-o", "o", "-i", "i"}, "-e"},
        {{"-c", "c", "-o", "o", "-e", "e"}, "-i"},
        {complete({"-i"}), "-i needs a value"},
        {complete({"-e", ""}), "-e needs a value"},
        {complete({"--root"}), "--root needs a value"},
        {complete({"--explain="}), "--explain= needs a value"},
        {complete({"--check=yes"}), "--check=yes"},
        {complete({"--nonsense"}), "unknown option --nonsense"},
        {complete({"extra"}), "unexpected argument extra"},
    };
    for (const auto& [arguments, reason] : cases) {
        const CommandLine line = parse(arguments);
        EXPECT_EQ(line.action, Action::Refuse) << reason;
        EXPECT_NE(line.message.find(reason), std::string::npos) << line.message << " | " << reason;
    }
}

TEST(SignatureScannerCommandLine, EnvironmentIsTheDefaultRoot) {
    EXPECT_EQ(parse(complete({}), "/environment").options.root, "/environment");
    EXPECT_EQ(parse(complete({"--root", "/given"}), "/environment").options.root, "/given");
}
