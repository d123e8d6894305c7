#include "cli/commands/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr const char* kMainFooter = R"(Examples:
  zav hw                                   what is in this machine, to read
  zav hw --group Processor --group Memory  two groups only
  zav hw --format json --output pc.json    everything, for a program
  zav sw signatures.xml                    which of the software described there is installed
  zav doctor                               why it does not work, if it does not

Exit status: 0 success, 1 the inventory failed, 2 the command line is wrong, 3 the inventory is written, but something
that was asked for could not be read. A signal ends the command as such, once it has cleaned up.
--output puts a new file into its place and follows no link; it refuses pipes, devices and directories.
'zav hw --help' and 'zav sw --help' tell more.)";

constexpr const char* kHardwareFooter =
    R"(Groups are named as 'zav groups' lists them, in any case, with or without blanks, or by number:
'--group OperatingSystem', '--group "operating system"' and '--group 4' are the same.

Formats:
  table  to read. Several instances stand in a table below the values that all of them share. With all groups, long
         groups and long values are cut short; --group or --all shows them whole.
  json   {"scan": {...}, "status": {"Processor": {"status": "complete"}, ...},
         "groups": {"Processor": [{"DeviceID": "cpu0", ...}, ...], ...}}; all values are strings
  csv    one record per field: group,instance,field,value; instances count from 0; the field _status of a group without
         an instance tells how reading it went
  xml    one element per instance below the root, one element per field in it, as the scanner writes; the scanner's own
         ScanInfo, which tells how reading each group went, is always among them

That a group has no instances means that there are none only where it is complete. Others are told on standard error:
partial, unread (it could not be read), unsupported (the scanner does not know how), not-applicable (this system has no
such thing, or the scanned directory does not tell of it), or unknown where the scanner does not say.

The scanner 'quorvah' is taken from --toolkit, else from the toolkit that /etc/zav/zav.ini names, else from the one that
came with this command. --root is understood by the latter, so an installed toolkit is passed over then.

Examples:
  sudo zav hw                                      serial numbers and memory modules need root
  zav hw --group "Software Packages" --all
  zav hw --group 25 --format csv --output packages.csv
  zav hw --root /mnt/image --format json           the system below /mnt/image in place of this machine

Exit status: 0 the inventory is written, 1 it failed, 2 the command line is wrong, 3 it is written, but a group could not
be read, or is partial for another reason than a missing permission, or was named by --group and the scanner does not
know how to gather it.)";

constexpr const char* kSoftwareFooter =
    R"(A signatures file describes software: which packages, files or contents tell that it is installed, and which values,
such as its version, are to be reported. A directory stands for all *.xml files in it. Several files are evaluated in one
run where they can be joined.

--variable NAME=VALUE presets a variable for all signatures, NAME=VALUE@GUID for one. What stands behind the last '@' is
an identifier when a signature in the files has it, or when it looks like 6f0d1c52-8f0e-4c39-9a55-0b5a3d1f0001. A variable
has one value in a run.
--config PLUGIN.ATTRIBUTE=VALUE changes a setting of the scanner.
--guid GUID shows the results of this signature only, in any case. When it does not match, that is told on standard error,
the result is empty and the exit status 0. An identifier that no file has is refused.

Formats:
  table  to read: a paragraph per match, with the first piece of evidence for it
  json   {"scan": {...}, "complete": true, "results": [{"guid", "name", "variables": {...}, "metadata": {...},
         "evidence": [...]}, ...], "undecided": [{"guid", "name"}, ...], "warnings": [...]}; all values are strings
  csv    one record per variable: result,guid,name,variable,value; results count from 0; a signature of which it is
         unknown whether it matches has one without a number, with the variable _status
  xml    one element MatchedSignature per match, as the scanner writes; complete="false" when one may be missing

What could not be examined, such as a file that must not be read, is told on standard error in any format.

The scanner 'quorvis' is taken from --toolkit, else from the toolkit that /etc/zav/zav.ini names, else from the one that
came with this command. --root is understood by the latter, so an installed toolkit is passed over then.

Examples:
  zav sw signatures.xml
  zav sw /usr/share/zav/signatures --format json --output software.json
  zav sw signatures.xml --variable minVersion=3.11 --config FileSystem.maxDepth=6
  zav sw signatures.xml --root /mnt/image        the system below /mnt/image in place of this machine
  zav sw --check signatures.xml                  is the file valid? if not, in which line is it wrong?
  zav sw --explain GUID signatures.xml           why does this signature match, or not?

Exit status: 0 evaluated, also without a match, or valid; 1 the evaluation failed, or a file is not valid; 2 the command
line is wrong, or a file cannot be read; 3 the results are written, but of a signature it is unknown whether it matches, or
something was left out.)";

constexpr const char* kDoctorFooter =
    R"(Prints one line per check: ok, note (works, but worth knowing) or problem (no inventory is possible). The checks named
'ownership' tell who else could replace a scanner, with the command line that mends it; root starts no such scanner.
Exit status: 0 when an inventory can work, 1 when not.)";

// The format is chosen by its name in any case.
void addFormat(CLI::App& command, std::string& name, const std::vector<std::string>& names,
               const std::string& help) {
    command.add_option("--format", name, help)
        ->type_name("FORMAT")
        ->check(CLI::IsMember(names, CLI::ignore_case).description(""));
}

Format formatNamed(const std::string& name) {
    static const std::map<std::string, Format> formats{
        {"table", Format::Table}, {"json", Format::Json}, {"csv", Format::Csv}, {"xml", Format::Xml}};
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

// What commands that run a scanner have in common.
void addScan(CLI::App& command, Options& options, std::string& format, int& verbosity) {
    addFormat(command, format, {"table", "json", "csv", "xml"}, "table (the default), json, csv or xml");
    command.add_flag(
        "--csv-raw", options.csvRaw,
        "Write values that begin with =, +, -, @ or a control character to csv without the apostrophe that "
        "keeps spreadsheets from taking them for formulas");
    command
        .add_option("-o,--output", options.output,
                    "Write to this new file, whole or not at all; - is standard output")
        ->type_name("FILE");
    addToolkit(command, options);
    command.add_option("--root", options.root, "Scan the system below this directory")
        ->type_name("DIR")
        ->check(CLI::ExistingDirectory.description(""));
    command.add_flag("-v", verbosity, "Show more of the library's messages; -vv shows all");
}

void addHardware(CLI::App& app, Options& options, std::string& format, int& verbosity) {
    CLI::App& command = *app.add_subcommand("hw", "Take an inventory of the hardware and the system");
    command.footer(kHardwareFooter);
    addRepeated(command, "-g,--group", options.groups, "GROUP", "Scan this group only; may be repeated");
    addScan(command, options, format, verbosity);
    command.add_flag("--all", options.all, "Leave nothing out of the table");
    command.callback([&options] { options.command = Command::Hardware; });
}

void addSoftware(CLI::App& app, Options& options, std::string& format, int& verbosity) {
    CLI::App& command = *app.add_subcommand("sw", "Find software by signatures");
    command.footer(kSoftwareFooter);
    command.add_option("FILE", options.signatures, "Signatures files, or directories of them")
        ->type_name("")
        ->required();
    addRepeated(command, "--variable", options.variables, "NAME=VALUE[@GUID]",
                "Preset a variable; may be repeated");
    addRepeated(command, "--config", options.settings, "PLUGIN.ATTRIBUTE=VALUE",
                "Change a setting of the scanner; may be repeated");
    addRepeated(command, "--guid", options.guids, "GUID",
                "Show this signature's results only; may be repeated");
    addScan(command, options, format, verbosity);
    command.add_flag("--check", options.check, "Only tell whether the files are valid, and what is wrong");
    command
        .add_option("--explain", options.explain,
                    "Only tell how the conditions of this signature come out, and why")
        ->type_name("GUID");
    command.callback([&options] { options.command = Command::Software; });
}

void addGroups(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("groups", "List the groups");
    addFormat(command, format, {"table", "json", "csv"}, "table (the default), json or csv");
    addToolkit(command, options);
    command.callback([&options] { options.command = Command::Groups; });
}

void addDoctor(CLI::App& app, Options& options) {
    CLI::App& command =
        *app.add_subcommand("doctor", "Check whether an inventory can work, and say what to do if not");
    command.footer(kDoctorFooter);
    addToolkit(command, options);
    command.callback([&options] { options.command = Command::Doctor; });
}

void requireAlone(const CLI::App& software, const char* flag, const std::vector<const char*>& others) {
    if (software.count(flag) == 0) return;
    for (const char* option : others) {
        if (software.count(option) > 0)
            throw Failure(kExitBadUsage, fmt::format("{} and {} exclude each other", flag, option));
    }
}

}  // namespace

std::variant<Options, HelpText> parseOptions(int argc, const char* const* argv) {
    Options options;
    std::string format = "table";
    int verbosity = 0;
    CLI::App app("The inventory of this machine, hardware and software.", "zav");
    app.footer(kMainFooter);
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", "zav " ZAV_CLI_VERSION);
    app.get_formatter()->column_width(26);
    addHardware(app, options, format, verbosity);
    addSoftware(app, options, format, verbosity);
    addGroups(app, options, format);
    addDoctor(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return HelpText{app.help()};
    } catch (const CLI::CallForVersion& version) {
        return HelpText{std::string(version.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        throw Failure(kExitBadUsage, fmt::format("{} (see 'zav --help')", error.what()));
    }
    if (app.get_subcommands().empty())
        throw Failure(kExitBadUsage, "which command: hw, sw, groups or doctor? (see 'zav --help')");
    // What shapes results has no meaning where there are none.
    const CLI::App& software = *app.get_subcommand("sw");
    requireAlone(software, "--check",
                 {"--explain", "--variable", "--config", "--guid", "--format", "--output", "--root"});
    requireAlone(software, "--explain", {"--guid", "--format", "--output"});
    if (options.output == "-") options.output.reset();
    options.format = formatNamed(format);
    options.verbosity = static_cast<Verbosity>(std::min(verbosity, 2));
    return options;
}

}  // namespace zavcli
