#include "toolkit/quorvah/scan/CommandLine.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using toolkit::quorvah::Action;
using toolkit::quorvah::CommandLine;

namespace {

using Variables = std::map<std::string, std::string>;

CommandLine parse(std::vector<std::string> arguments, const Variables& variables = {}) {
    arguments.insert(arguments.begin(), "quorvah");
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    return toolkit::quorvah::parseCommandLine(
        static_cast<int>(arguments.size()), pointers.data(), [&variables](const char* name) {
            const auto found = variables.find(name);
            return found == variables.end() ? nullptr : found->second.c_str();
        });
}

}  // namespace

TEST(ScannerCommandLine, TakesTheTwoFiles) {
    const CommandLine line = parse({"-c", "config.xml", "-o", "out.xml"});
    EXPECT_EQ(line.action, Action::Scan);
    EXPECT_EQ(line.options.config, "config.xml");
    EXPECT_EQ(line.options.output, "out.xml");
    EXPECT_EQ(line.options.root, "");
    EXPECT_FALSE(line.options.pretty || line.options.raw || line.options.noVolatile ||
                 line.options.sanitize || line.options.emptySlots);
}

TEST(ScannerCommandLine, TakesEveryOption) {
    const CommandLine line = parse({"--config=c", "--output", "o", "--root", "/tree", "--ids=/ids",
                                    "--pretty", "--raw", "--no-volatile", "--sanitize", "--empty-slots"});
    EXPECT_EQ(line.action, Action::Scan);
    EXPECT_EQ(line.options.config, "c");
    EXPECT_EQ(line.options.output, "o");
    EXPECT_EQ(line.options.root, "/tree");
    EXPECT_EQ(line.options.ids, "/ids");
    EXPECT_TRUE(line.options.pretty && line.options.raw && line.options.noVolatile && line.options.sanitize &&
                line.options.emptySlots);
}

TEST(ScannerCommandLine, ListingFieldsNeedsNoFiles) {
    EXPECT_EQ(parse({"--list-fields"}).action, Action::ListFields);
    EXPECT_FALSE(parse({"--list-fields", "--format", "text"}).json);
    EXPECT_TRUE(parse({"--format=json", "--list-fields"}).json);
    EXPECT_EQ(parse({"--list-fields", "--help"}).action, Action::Help);
    EXPECT_EQ(parse({"--list-fields", "--format", "xml"}).message, "--format is either text or json");
    EXPECT_EQ(parse({"-c", "x", "-o", "y", "--format", "json"}).message, "--format needs --list-fields");
}

TEST(ScannerCommandLine, HelpAndVersionNeedNothingElse) {
    EXPECT_EQ(parse({"--help"}).action, Action::Help);
    EXPECT_EQ(parse({"-h"}).action, Action::Help);
    EXPECT_EQ(parse({"--version"}).action, Action::Version);
    EXPECT_EQ(parse({"-c", "x", "-V"}).action, Action::Version);
}

TEST(ScannerCommandLine, RejectsWithAReason) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "-c"},
        {{"-c", "x"}, "-o"},
        {{"-o", "x"}, "-c"},
        {{"-c"}, "-c needs a value"},
        {{"-c", "x", "-o"}, "-o needs a value"},
        {{"-c", "", "-o", "y"}, "-c needs a value"},
        {{"-c", "x", "-o", "y", "--root"}, "--root needs a value"},
        {{"-c", "x", "-o", "y", "--root="}, "--root= needs a value"},
        {{"-c", "x", "-o", "y", "--nonsense"}, "unknown option --nonsense"},
        {{"-c", "x", "-o", "y", "-z"}, "unknown option -z"},
        {{"-c", "x", "-o", "y", "--pretty=yes"}, "--pretty=yes"},
        {{"-c", "x", "-o", "y", "extra"}, "unexpected argument extra"},
        {{"extra", "-c", "x", "-o", "y"}, "unexpected argument extra"},
        {{"-c", "x", "-o", "y", "--", "--pretty"}, "unexpected argument --pretty"},
    };
    for (const auto& [arguments, reason] : cases) {
        const CommandLine line = parse(arguments);
        EXPECT_EQ(line.action, Action::Refuse) << reason;
        EXPECT_NE(line.message.find(reason), std::string::npos) << line.message << " | " << reason;
    }
}

TEST(ScannerCommandLine, TheEnvironmentIsTheDefaultOfRoot) {
    const Variables variables = {{"QUORVAH_ROOT", "/from/environment"}};
    EXPECT_EQ(parse({"-c", "x", "-o", "y"}, variables).options.root, "/from/environment");
    EXPECT_EQ(parse({"-c", "x", "-o", "y", "--root", "/given"}, variables).options.root, "/given");
    EXPECT_EQ(parse({"-c", "x", "-o", "y"}, {{"QUORVAH_ROOT", ""}}).options.root, "");
}

TEST(ScannerCommandLine, TheEnvironmentTurnsOptionsOn) {
    const toolkit::quorvah::Options options =
        parse({"-c", "x", "-o", "y"},
              {{"QUORVAH_PRETTY", "1"}, {"QUORVAH_NO_VOLATILE", "true"}, {"QUORVAH_SANITIZE", "yes"}})
            .options;
    EXPECT_TRUE(options.pretty && options.noVolatile && options.sanitize);
}

TEST(ScannerCommandLine, TheEnvironmentTurnsNoOptionOff) {
    for (const char* const off : {"", "0", "false"}) {
        const Variables variables = {
            {"QUORVAH_PRETTY", off}, {"QUORVAH_NO_VOLATILE", off}, {"QUORVAH_SANITIZE", off}};
        const toolkit::quorvah::Options none = parse({"-c", "x", "-o", "y"}, variables).options;
        EXPECT_FALSE(none.pretty || none.noVolatile || none.sanitize) << off;
        const toolkit::quorvah::Options given =
            parse({"-c", "x", "-o", "y", "--pretty", "--no-volatile", "--sanitize"}, variables).options;
        EXPECT_TRUE(given.pretty && given.noVolatile && given.sanitize) << off;
    }
}

TEST(ScannerCommandLine, ARecordNeedsARoot) {
    EXPECT_EQ(parse({"-c", "x", "-o", "y", "--record", "r"}).action, Action::Refuse);
    EXPECT_EQ(parse({"-c", "x", "-o", "y", "--record", "r", "--root", "/"}).options.record, "r");
    EXPECT_EQ(parse({"-c", "x", "-o", "y"}, {{"QUORVAH_RECORD", "r"}, {"QUORVAH_ROOT", "/"}}).options.record,
              "r");
}

TEST(ScannerCommandLine, TheOptionSandboxOverridesTheEnvironment) {
    const Variables variables = {{"QUORVAH_SANDBOX", "optional"}};
    EXPECT_TRUE(parse({"-c", "x", "-o", "y"}, variables).options.sandboxOptional);
    EXPECT_FALSE(parse({"-c", "x", "-o", "y", "--sandbox", "required"}, variables).options.sandboxOptional);
    EXPECT_FALSE(parse({"-c", "x", "-o", "y"}, {{"QUORVAH_SANDBOX", "no"}}).options.sandboxOptional);
}
