#include "cli/commands/Options.h"

#include <gtest/gtest.h>

#include "cli/system/Failure.h"

namespace zavcli {
namespace {

using Words = std::vector<const char*>;

std::variant<Options, HelpText> parse(Words words) {
    words.insert(words.begin(), "zav");
    return parseOptions(static_cast<int>(words.size()), words.data());
}

Options options(const Words& words) {
    return std::get<Options>(parse(words));
}

std::string refusal(const Words& words) {
    try {
        parse(words);
    } catch (const Failure& failure) {
        EXPECT_EQ(kExitBadUsage, failure.status());
        return failure.what();
    }
    return "not refused";
}

TEST(Options, PlainInventoryIsATableOfAllGroups) {
    const Options plain = options({"hw"});
    EXPECT_EQ(Command::Hardware, plain.command);
    EXPECT_EQ(Format::Table, plain.format);
    EXPECT_TRUE(plain.groups.empty());
    EXPECT_FALSE(plain.all);
    EXPECT_FALSE(plain.output || plain.toolkit || plain.root);
    EXPECT_EQ(Verbosity::Errors, plain.verbosity);
}

TEST(Options, EveryOptionOfAnInventoryIsParsed) {
    const Options full =
        options({"hw", "--group", "Processor", "-g", "Operating System", "--group=4", "--format", "json",
                 "--all", "--output", "out.json", "--toolkit", "tools", "--root", "/"});
    EXPECT_EQ((std::vector<std::string>{"Processor", "Operating System", "4"}), full.groups);
    EXPECT_EQ(Format::Json, full.format);
    EXPECT_TRUE(full.all);
    EXPECT_EQ("out.json", full.output);
    EXPECT_EQ("tools", full.toolkit);
    EXPECT_EQ("/", full.root);
}

TEST(Options, GroupsNeedNoOption) {
    EXPECT_EQ((std::vector<std::string>{"Processor", "Memory"}),
              options({"hw", "Processor", "Memory"}).groups);
    EXPECT_EQ((std::vector<std::string>{"Memory", "4"}),
              options({"hw", "--all", "Memory", "-o", "f", "4"}).groups);
    EXPECT_EQ((std::vector<std::string>{"Memory", "4"}), options({"hw", "--group", "Memory", "4"}).groups);
    EXPECT_EQ((std::vector<std::string>{"Memory", "4"}), options({"facts", "Memory", "4"}).groups);
}

TEST(Options, AnInventoryHidesAndOmitsNothingUnlessAsked) {
    const Options plain = options({"hw"});
    EXPECT_FALSE(plain.sanitize || plain.noVolatile || plain.pretty);
    EXPECT_TRUE(options({"hw", "--sanitize"}).sanitize);
    EXPECT_TRUE(options({"hw", "--no-volatile"}).noVolatile);
    EXPECT_TRUE(options({"hw", "--pretty"}).pretty);
}

TEST(Options, WithoutACommandTheMachineIsSummarised) {
    EXPECT_EQ(Command::Summary, options({}).command);
    EXPECT_FALSE(options({}).commandNames.empty());
}

TEST(Options, FactsAreForAnsibleUnlessPrometheusIsNamed) {
    EXPECT_EQ(Command::Facts, options({"facts"}).command);
    EXPECT_EQ(FactFormat::Ansible, options({"facts"}).facts);
    EXPECT_EQ(FactFormat::Prometheus, options({"facts", "--format", "Prometheus"}).facts);
    EXPECT_TRUE(options({"facts", "--sanitize"}).sanitize);
}

TEST(Options, TwoInventoriesAreCompared) {
    const Options diff = options({"diff", "a.json", "-", "--format", "json", "--ignore-access", "-o", "out"});
    EXPECT_EQ(Command::Diff, diff.command);
    EXPECT_EQ("a.json", diff.before);
    EXPECT_EQ("-", diff.after);
    EXPECT_EQ(Format::Json, diff.format);
    EXPECT_TRUE(diff.ignoreAccess);
    EXPECT_EQ("out", diff.output);
    EXPECT_FALSE(options({"diff", "a", "b"}).ignoreAccess);
    EXPECT_NE(std::string::npos, refusal({"diff", "a"}).find("NEW is required"));
}

TEST(Options, AnArchiveIsMade) {
    const Options capture = options({"capture", "m.tar.zst", "--root", "/"});
    EXPECT_EQ(Command::Capture, capture.command);
    EXPECT_EQ("m.tar.zst", capture.archive);
    EXPECT_EQ("/", capture.root);
    EXPECT_NE(std::string::npos, refusal({"capture"}).find("FILE is required"));
}

TEST(Options, EveryOptionOfASoftwareInventoryIsParsed) {
    const Options full = options({"sw",
                                  "a.xml",
                                  "--variable",
                                  "x=1",
                                  "--variable=y=2",
                                  "--config",
                                  "FileSystem.maxDepth=3",
                                  "--guid",
                                  "g",
                                  "--guid",
                                  "h",
                                  "--format",
                                  "csv",
                                  "-o",
                                  "out.csv",
                                  "--toolkit",
                                  "tools",
                                  "--root",
                                  "/",
                                  "-v",
                                  "b.xml"});
    EXPECT_EQ(Command::Software, full.command);
    EXPECT_EQ((std::vector<std::string>{"a.xml", "b.xml"}), full.signatures);
    EXPECT_EQ((std::vector<std::string>{"x=1", "y=2"}), full.variables);
    EXPECT_EQ((std::vector<std::string>{"FileSystem.maxDepth=3"}), full.settings);
    EXPECT_EQ((std::vector<std::string>{"g", "h"}), full.guids);
    EXPECT_EQ(Format::Csv, full.format);
    EXPECT_EQ("out.csv", full.output);
    EXPECT_EQ("tools", full.toolkit);
    EXPECT_EQ("/", full.root);
    EXPECT_EQ(Verbosity::Notable, full.verbosity);
    EXPECT_FALSE(full.check);
    EXPECT_TRUE(options({"sw", "--check", "a.xml"}).check);
    EXPECT_TRUE(options({"sw", "--list"}).list);
    EXPECT_EQ("/x", options({"sw", "--suggest", "/x"}).suggest);
    EXPECT_TRUE(options({"sw", "--details"}).details);
    EXPECT_TRUE(options({"sw", "--unmanaged"}).unmanaged);
}

TEST(Options, EveryOptionOfABillOfMaterialsIsParsed) {
    const Options full =
        options({"sbom", "a.xml", "--format", "SPDX", "--hashes", "-o", "out.json", "--config",
                 "FileSystem.maxDepth=3", "--toolkit", "tools", "--root", "/", "-v"});
    EXPECT_EQ(Command::Sbom, full.command);
    EXPECT_EQ(BillFormat::Spdx, full.bill);
    EXPECT_TRUE(full.hashes);
    EXPECT_EQ("out.json", full.output);
    EXPECT_EQ((std::vector<std::string>{"FileSystem.maxDepth=3"}), full.settings);
    EXPECT_EQ("tools", full.toolkit);
    EXPECT_EQ("/", full.root);
    EXPECT_EQ(Verbosity::Notable, full.verbosity);
    const Options plain = options({"sbom"});
    EXPECT_EQ(BillFormat::CycloneDx, plain.bill);
    EXPECT_FALSE(plain.hashes);
}

TEST(Options, SignatureFilesAreOptional) {
    EXPECT_TRUE(options({"sw"}).signatures.empty());
    EXPECT_TRUE(options({"sw", "--guid", "zav.bash"}).signatures.empty());
}

TEST(Options, FormatIsCaseInsensitive) {
    EXPECT_EQ(Format::Table, options({"hw", "--format", "table"}).format);
    EXPECT_EQ(Format::Json, options({"hw", "--format", "JSON"}).format);
    EXPECT_EQ(Format::Csv, options({"hw", "--format", "Csv"}).format);
    EXPECT_EQ(Format::Xml, options({"hw", "--format", "xml"}).format);
    EXPECT_EQ(Format::Yaml, options({"sw", "--format", "Yaml"}).format);
    EXPECT_EQ(Format::JsonLines, options({"sw", "--format", "jsonl"}).format);
    EXPECT_EQ(Format::Csv, options({"groups", "--format", "csv"}).format);
}

TEST(Options, EachVRaisesTheVerbosity) {
    EXPECT_EQ(Verbosity::Notable, options({"hw", "-v"}).verbosity);
    EXPECT_EQ(Verbosity::Trace, options({"hw", "-vv"}).verbosity);
    EXPECT_EQ(Verbosity::Trace, options({"hw", "-v", "-v"}).verbosity);
    EXPECT_EQ(Verbosity::Trace, options({"hw", "-vvvv"}).verbosity);
}

TEST(Options, OtherCommandsAreParsed) {
    EXPECT_EQ(Command::Groups, options({"groups"}).command);
    EXPECT_EQ(Command::Doctor, options({"doctor"}).command);
    EXPECT_EQ("tools", options({"doctor", "--toolkit", "tools"}).toolkit);
}

TEST(Options, HelpShowsExamplesAndNeedsNoCommand) {
    for (const Words& words : {Words{"--help"}, Words{"-h"}, Words{"hw", "--help"}, Words{"sw", "--help"},
                               Words{"sbom", "--help"}}) {
        const auto parsed = parse(words);
        ASSERT_TRUE(std::holds_alternative<HelpText>(parsed));
        EXPECT_NE(std::string::npos, std::get<HelpText>(parsed).text.find("Examples:"));
    }
}

TEST(Options, HelpOfACommandNamesItsOptions) {
    const std::string text = std::get<HelpText>(parse({"hw", "--help"})).text;
    for (const char* option : {"--group", "--format", "--all", "--output", "--toolkit", "--root", "-v"})
        EXPECT_NE(std::string::npos, text.find(option)) << option;
    const std::string software = std::get<HelpText>(parse({"sw", "--help"})).text;
    for (const char* option : {"FILE", "--variable", "--config", "--guid", "--list", "--details",
                               "--unmanaged", "--suggest", "--check", "--explain", "--format"})
        EXPECT_NE(std::string::npos, software.find(option)) << option;
}

TEST(Options, CommandsWithoutFormatsOfTheirOwnDoNotRepeatTheMainHelp) {
    for (const char* command : {"groups", "doctor"})
        EXPECT_EQ(std::string::npos, std::get<HelpText>(parse({command, "--help"})).text.find("zav hw"))
            << command;
}

TEST(Options, BadUsageRefersToTheHelpOfTheCommand) {
    EXPECT_TRUE(refusal({"frob"}).ends_with("(see 'zav --help')"));
    EXPECT_TRUE(refusal({"hw", "--nope"}).ends_with("(see 'zav hw --help')"));
    EXPECT_TRUE(refusal({"sw", "--nope"}).ends_with("(see 'zav sw --help')"));
}

TEST(Options, VersionIsOneLine) {
    const std::string text = std::get<HelpText>(parse({"--version"})).text;
    EXPECT_EQ(0U, text.find("zav "));
    EXPECT_EQ(text.size() - 1, text.find('\n'));
}

TEST(Options, BadCommandLinesAreRefusedWithTheReason) {
    const struct {
        Words words;
        const char* named;
    } cases[] = {
        {{"frob"}, "frob"},
        {{"hw", "--nope"}, "--nope"},
        {{"--nope"}, "--nope"},
        {{"doctor", "extra"}, "extra"},
        {{"hw", "--group"}, "--group"},
        {{"hw", "--output"}, "--output"},
        {{"hw", "--format", "toml"}, "toml"},
        {{"hw", "--typed"}, "--typed"},
        {{"hw", "--format", "csv", "--typed"}, "--typed"},
        {{"facts", "--format", "json"}, "json"},
        {{"sw", "--list", "--format", "jsonl"}, "--list"},
        {{"hw", "--format", "1"}, "1"},
        {{"groups", "--format", "xml"}, "xml"},
        {{"hw", "--root", "/no/such/place"}, "/no/such/place"},
        {{"hw", "--root", "/dev/null"}, "/dev/null"},
        {{"doctor", "--format", "json"}, "--format"},
        {{"sw", "--list", "--format", "xml"}, "--list"},
        {{"sw", "--list", "--guid", "g"}, "--guid"},
        {{"sw", "--list", "--check"}, "--list"},
        {{"sw", "--suggest"}, "--suggest"},
        {{"sw", "--suggest", "/x", "--check"}, "--suggest"},
        {{"sw", "--suggest", "/x", "--format", "json"}, "--format"},
        {{"sw", "--list", "--unmanaged"}, "--unmanaged"},
        {{"sw", "--check", "--details"}, "--details"},
        {{"sw", "--explain", "g", "--unmanaged"}, "--unmanaged"},
        {{"sw", "a.xml", "--all"}, "--all"},
        {{"sw", "a.xml", "--check", "--guid", "g"}, "--guid"},
        {{"sw", "a.xml", "--check", "--format", "json"}, "--format"},
        {{"sw", "a.xml", "--check", "--explain", "g"}, "--explain"},
        {{"sw", "a.xml", "--explain", "g", "--output", "x"}, "--output"},
    };
    for (const auto& [words, named] : cases) {
        const std::string text = refusal(words);
        EXPECT_NE(std::string::npos, text.find(named)) << text;
        EXPECT_EQ(std::string::npos, text.find('\n')) << text;
    }
}

}  // namespace
}  // namespace zavcli
