#include "cli/commands/Options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

#include "cli/commands/HelpTexts.h"
#include "cli/scan/InstalledFiles.h"
#include "cli/scan/SimilarNames.h"
#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

// The name of the format is case-insensitive.
void addFormat(CLI::App& command, std::string& name, const std::vector<std::string>& names,
               const std::string& help) {
    command.add_option("--format", name, help)
        ->type_name("FORMAT")
        ->check(CLI::IsMember(names, CLI::ignore_case).description(""));
}

Format formatNamed(const std::string& name) {
    static const std::map<std::string, Format> formats{{"table", Format::Table},     {"json", Format::Json},
                                                       {"jsonl", Format::JsonLines}, {"csv", Format::Csv},
                                                       {"xml", Format::Xml},         {"yaml", Format::Yaml}};
    return formats.at(lowerCase(name));
}

void addToolkit(CLI::App& command, Options& options) {
    command.add_option("--toolkit", options.toolkit, "Directory that holds the scanner")->type_name("DIR");
}

// An option that takes one value and may be repeated.
void addRepeated(CLI::App& command, const std::string& names, std::vector<std::string>& values,
                 const std::string& type, const std::string& help) {
    command.add_option(names, values, help)->type_name(type)->take_all()->allow_extra_args(false);
}

// What a scanner looks at.
void addRoot(CLI::App& command, Options& options) {
    command.add_option("--root", options.root, "Scan the system below this directory")
        ->type_name("DIR")
        ->check(CLI::ExistingDirectory.description(""));
    command.add_flag("-v")->description("Show more messages of the library; -vv shows all");
}

// What the commands that run a scanner read and write.
void addPlaces(CLI::App& command, Options& options) {
    command.add_option("-o,--output", options.output, "Write to this file instead of standard output (-)")
        ->type_name("FILE");
    addToolkit(command, options);
    addRoot(command, options);
}

void addSignatureFiles(CLI::App& command, Options& options) {
    command
        .add_option("FILE", options.signatures,
                    "Signature files, or directories of them; the default is what comes with the command")
        ->type_name("");
}

void addSettings(CLI::App& command, Options& options) {
    addRepeated(command, "--config", options.settings, "PLUGIN.ATTRIBUTE=VALUE",
                "Change a setting of the scanner; may be repeated");
}

// The options of the commands that print an inventory.
void addScan(CLI::App& command, Options& options, std::string& format) {
    addFormat(command, format, {"table", "json", "jsonl", "csv", "xml", "yaml"},
              "table (the default), json, jsonl, csv, xml or yaml");
    command.add_flag("--typed", options.typed,
                     "In json, jsonl and yaml, write numbers, booleans and lists instead of texts");
    command.add_flag("--csv-raw", options.csvRaw,
                     "In csv, do not mark values that look like formulas with an apostrophe");
    command.add_option("--csv-dir", options.csvDirectory, "Write csv, a file per group, into this directory")
        ->type_name("DIR");
    addPlaces(command, options);
}

void addGroupChoice(CLI::App& command, Options& options) {
    command.add_option("-g,--group,GROUP", options.groups, "Scan only these groups")
        ->type_name("GROUP")
        ->take_all();
}

void addHiding(CLI::App& command, Options& options) {
    command.add_flag("--sanitize", options.sanitize,
                     "Hash serial numbers, addresses and names of the machine and its users");
    command.add_flag("--no-volatile", options.noVolatile,
                     "Omit values that change while the machine stays the same");
}

void addHardware(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("hw", "Take an inventory of the hardware and the system");
    command.footer(kHardwareFooter);
    addGroupChoice(command, options);
    addScan(command, options, format);
    command.add_flag("--all", options.all, "Show everything in the table");
    addHiding(command, options);
    command.add_flag("--pretty", options.pretty, "Let the scanner break and indent the lines of its file");
    command.callback([&options] { options.command = Command::Hardware; });
}

void addSoftware(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("sw", "Find software by signatures");
    command.footer(kSoftwareFooter);
    addSignatureFiles(command, options);
    addRepeated(command, "--variable", options.variables, "NAME=VALUE[@GUID]",
                "Preset a variable; may be repeated");
    addSettings(command, options);
    addRepeated(command, "--guid", options.guids, "GUID",
                "Show only the results of this signature; may be repeated");
    command.add_flag("--unmanaged", options.unmanaged, "Show only what no package manager owns");
    command.add_flag("--details", options.details, "Show all values of each result in the table");
    addScan(command, options, format);
    command.add_flag("--list", options.list, "Only list the signatures: name, publisher and identifier");
    command.add_option("--suggest", options.suggest, "Only draft a signature for this program or directory")
        ->type_name("PATH");
    command.add_flag("--check", options.check, "Only check whether the files are valid");
    command.add_option("--explain", options.explain, "Only explain why this signature matches or not")
        ->type_name("GUID");
    command.callback([&options] { options.command = Command::Software; });
}

void addFacts(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("facts", "Print the inventory for Ansible or Prometheus");
    command.footer(kFactsFooter);
    addFormat(command, format, {"ansible", "prometheus"}, "ansible (the default) or prometheus");
    addGroupChoice(command, options);
    addHiding(command, options);
    addPlaces(command, options);
    command.callback([&options] { options.command = Command::Facts; });
}

void addSbom(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("sbom", "Write a bill of materials of the software");
    command.footer(kSbomFooter);
    addSignatureFiles(command, options);
    addFormat(command, format, {"cyclonedx", "spdx"}, "cyclonedx (the default) or spdx");
    command.add_flag("--hashes", options.hashes, "Add hashes of the files in the evidence");
    addSettings(command, options);
    addPlaces(command, options);
    command.callback([&options] { options.command = Command::Sbom; });
}

void addReport(CLI::App& app, Options& options) {
    CLI::App& command = *app.add_subcommand("report", "Write the inventory as a page for a browser");
    command.footer(kReportFooter);
    CLI::Option* const noHardware =
        command.add_flag("--no-hardware", options.noHardware, "Leave out the hardware");
    command.add_flag("--no-software", options.noSoftware, "Leave out the software")->excludes(noHardware);
    CLI::Option* const from =
        command.add_option("--from", options.from, "Make the page of this saved inventory, without a scan")
            ->type_name("FILE")
            ->excludes(noHardware);
    command.add_option("--compare", options.compare, "Mark what differs from this saved inventory")
        ->type_name("OLD")
        ->excludes(noHardware);
    addHiding(command, options);
    addPlaces(command, options);
    for (const char* const name : {"--sanitize", "--no-volatile", "--root", "--toolkit"})
        from->excludes(command.get_option(name));
    command.get_option("--sanitize")->excludes(noHardware);
    command.callback([&options] { options.command = Command::Report; });
}

void addExport(CLI::App& app, Options& options) {
    CLI::App& command = *app.add_subcommand("export", "Write the inventory into a database");
    command.footer(kExportFooter);
    command
        .add_option("--sqlite", options.database,
                    "Write into this SQLite database, which is made if it does not exist")
        ->type_name("FILE")
        ->required();
    CLI::Option* const from = command
                                  .add_option("--from", options.saved,
                                              "Write this saved inventory, without a scan; may be repeated")
                                  ->type_name("FILE")
                                  ->take_all()
                                  ->allow_extra_args(false);
    command.add_option("--host", options.host, "Name the host, instead of the name in the inventory")
        ->type_name("NAME");
    addGroupChoice(command, options);
    command.add_flag("--no-software", options.noSoftware, "Leave out the software");
    addHiding(command, options);
    addToolkit(command, options);
    addRoot(command, options);
    for (const char* const name : {"--sanitize", "--no-volatile", "--root", "--toolkit", "--group"})
        from->excludes(command.get_option(name));
    command.get_option("--sanitize")->needs(command.get_option("--no-software"));
    command.callback([&options] { options.command = Command::Export; });
}

void addDiff(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("diff", "Compare two hardware inventories");
    command.footer(kDiffFooter);
    command.add_option("OLD", options.before, "The earlier inventory")->type_name("")->required();
    command.add_option("NEW", options.after, "The later inventory")->type_name("")->required();
    addFormat(command, format, {"text", "json"}, "text (the default) or json");
    command.add_option("-o,--output", options.output, "Write to this file instead of standard output (-)")
        ->type_name("FILE");
    command.add_flag("--ignore-access", options.ignoreAccess,
                     "Leave out what only one of the scans could see");
    command.callback([&options] { options.command = Command::Diff; });
}

void addCapture(CLI::App& app, Options& options) {
    CLI::App& command = *app.add_subcommand("capture", "Archive the files that a hardware scan reads");
    command.footer(kCaptureFooter);
    command.add_option("FILE", options.archive, "The archive: .tar.zst, .tar.gz or .tar")
        ->type_name("")
        ->required();
    addToolkit(command, options);
    addRoot(command, options);
    command.add_flag("--sanitize", options.sanitize,
                     "Replace serial numbers, addresses and names of the machine and its users");
    command.callback([&options] { options.command = Command::Capture; });
}

void addGroups(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("groups", "List the hardware groups, or the fields of some");
    command.footer(kGroupsFooter);
    command.add_option("GROUP", options.groups, "List the fields of this group; may be repeated");
    addFormat(command, format, {"table", "json", "csv"}, "table (the default), json or csv");
    addToolkit(command, options);
    command.callback([&options] { options.command = Command::Groups; });
}

void addDoctor(CLI::App& app, Options& options) {
    CLI::App& command =
        *app.add_subcommand("doctor", "Check whether an inventory can be taken, and what to do if not");
    command.footer(kDoctorFooter);
    addToolkit(command, options);
    command.callback([&options] { options.command = Command::Doctor; });
}

// What "--help" is appended to in messages, such as "zav hw".
std::string parsedCommand(const CLI::App& app) {
    const std::vector<CLI::App*> parsed = app.get_subcommands();
    return parsed.empty() ? "zav" : "zav " + parsed.front()->get_name();
}

// The first argument that is not expected, with the names that may have been meant. Words behind an unknown option are its values.
std::string unexpectedArgument(const CLI::App& app) {
    const std::vector<std::string> extras = app.remaining(true);
    const auto option =
        std::ranges::find_if(extras, [](const std::string& word) { return word.starts_with('-'); });
    const std::string& argument = option == extras.end() ? extras.front() : *option;
    const std::string word = argument.substr(0, argument.find('='));
    const std::vector<CLI::App*> parsed = app.get_subcommands();
    std::string text = fmt::format("unexpected argument '{}'", word);
    std::vector<std::string> names;
    if (option != extras.end()) {
        text = fmt::format("unknown option '{}'", word);
        for (const CLI::Option* const each : (parsed.empty() ? &app : parsed.front())->get_options()) {
            for (const std::string& name : each->get_lnames()) names.push_back("--" + name);
        }
    } else if (parsed.empty()) {
        text = fmt::format("unknown command '{}'", word);
        for (const CLI::App* const each : app.get_subcommands({})) names.push_back(each->get_name());
    }
    const std::vector<std::string> similar = similarNames(names, word);
    return similar.empty() ? text : fmt::format("{}; did you mean {}?", text, fmt::join(similar, " or "));
}

void requireAlone(const CLI::App& software, const char* flag, const std::vector<const char*>& others) {
    if (software.count(flag) == 0) return;
    for (const char* option : others) {
        if (software.count(option) > 0)
            throw Failure(kExitBadUsage, fmt::format("{} and {} cannot be used together", flag, option));
    }
}

// Files of CSV are all that --csv-dir writes.
void requireFilesOnly(const CLI::App& command) {
    if (command.get_option_no_throw("--csv-dir") == nullptr || command.count("--csv-dir") == 0) return;
    if (command.count("--output") > 0)
        throw Failure(kExitBadUsage, "--csv-dir and --output cannot be used together");
    const CLI::Option& format = *command.get_option("--format");
    if (format.count() > 0 && lowerCase(format.as<std::string>()) != "csv")
        throw Failure(kExitBadUsage, "--csv-dir writes csv, so --format can only be csv");
}

// Counts the -v of the given command.
Verbosity verbosityOf(const CLI::App& app) {
    std::size_t count = 0;
    for (const CLI::App* const command : app.get_subcommands()) {
        const CLI::Option* const flag = command->get_option_no_throw("-v");
        if (flag != nullptr) count += flag->count();
    }
    return static_cast<Verbosity>(std::min<std::size_t>(count, 2));
}

}  // namespace

std::variant<Options, HelpText> parseOptions(int argc, const char* const* argv) {
    Options options;
    std::string format = "table";
    std::string facts = "ansible";
    std::string bill = "cyclonedx";
    std::string diff = "text";
    CLI::App app("Takes an inventory of the hardware and software of this machine.", "zav");
    app.footer(std::string(kMainFooter) + installedPaths());
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", "zav " ZAV_CLI_VERSION);
    app.get_formatter()->column_width(26);
    addHardware(app, options, format);
    addSoftware(app, options, format);
    addFacts(app, options, facts);
    addSbom(app, options, bill);
    addReport(app, options);
    addExport(app, options);
    addDiff(app, options, diff);
    addCapture(app, options);
    addGroups(app, options, format);
    addDoctor(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return HelpText{app.help()};
    } catch (const CLI::CallForVersion& version) {
        return HelpText{std::string(version.what()) + "\n"};
    } catch (const CLI::ExtrasError&) {
        throw Failure(kExitBadUsage,
                      fmt::format("{} (see '{} --help')", unexpectedArgument(app), parsedCommand(app)));
    } catch (const CLI::ParseError& error) {
        throw Failure(kExitBadUsage, fmt::format("{} (see '{} --help')", error.what(), parsedCommand(app)));
    }
    for (const CLI::App* const command : app.get_subcommands({}))
        options.commandNames.push_back(command->get_name());
    // Options that filter or format results have no effect if there are no results.
    const CLI::App& software = *app.get_subcommand("sw");
    requireAlone(software, "--check",
                 {"--suggest", "--list", "--explain", "--variable", "--config", "--guid", "--unmanaged",
                  "--details", "--format", "--output", "--csv-dir", "--root"});
    requireAlone(software, "--suggest",
                 {"FILE", "--list", "--explain", "--variable", "--config", "--guid", "--unmanaged",
                  "--details", "--format", "--csv-dir"});
    requireAlone(
        software, "--list",
        {"--explain", "--variable", "--config", "--guid", "--unmanaged", "--details", "--csv-dir", "--root"});
    requireAlone(software, "--explain",
                 {"--guid", "--unmanaged", "--details", "--format", "--output", "--csv-dir"});
    for (const CLI::App* const command : app.get_subcommands()) requireFilesOnly(*command);
    if (options.output == "-") options.output.reset();
    options.format = formatNamed(format);
    if (options.command == Command::Diff)
        options.format = lowerCase(diff) == "json" ? Format::Json : Format::Table;
    options.facts = lowerCase(facts) == "prometheus" ? FactFormat::Prometheus : FactFormat::Ansible;
    options.bill = lowerCase(bill) == "spdx" ? BillFormat::Spdx : BillFormat::CycloneDx;
    if (options.list && (options.format == Format::Xml || options.format == Format::JsonLines))
        throw Failure(kExitBadUsage,
                      "--list has the formats table, json, csv and yaml (see 'zav sw --help')");
    if (options.typed && options.format != Format::Json && options.format != Format::JsonLines &&
        options.format != Format::Yaml)
        throw Failure(kExitBadUsage, "--typed needs --format json, jsonl or yaml");
    options.verbosity = verbosityOf(app);
    return options;
}

}  // namespace zavcli
