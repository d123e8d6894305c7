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
  zav hw                                   show the hardware and the system
  zav hw --group Processor --group Memory  show two groups only
  zav hw --format json --output pc.json    write everything to a file, for a program
  zav sw                                   show which known software is installed, and where
  zav sw signatures.xml                    show which of the described software is installed
  zav sbom -o machine.cdx.json             write a bill of materials of the software
  zav diff monday.json tuesday.json        show what has changed between two inventories
  zav capture machine.tar.zst              archive what a scan reads, to scan it elsewhere
  zav doctor                               find out why an inventory does not work

Exit status: 0 success, 1 the command failed, 2 the command line is wrong, 3 the inventory is written, but requested
data could not be read; 'zav diff' has others. If a signal ends the command, it cleans up first and its parent sees
that signal. 'zav hw --help' and the like describe formats and options.)";

constexpr const char* kHardwareFooter =
    R"(Groups are named as 'zav groups' lists them, or by number. Names are case-insensitive, and blanks are ignored:
'--group OperatingSystem', '--group "operating system"' and '--group 4' are the same.

Formats:
  table  for people. Several instances form a table below the values that they share. Without --group, long groups and
         long values are shortened; --group or --all shows them completely.
  json   {"scan": {...}, "status": {"Processor": {"status": "complete"}, ...},
         "groups": {"Processor": [{"DeviceID": "cpu0", ...}, ...], ...}}; all values are strings
  csv    one record per field: group,instance,field,value. Instances are numbered from 0. The record with the field
         _status and without an instance holds the status of a group.
  xml    the format of the scanner: one element per instance below the root, one element per field in it. The element
         ScanInfo, which reports the status of each group, is always included.

A group without instances proves that the machine has none only if its status is complete. The other statuses are
reported on standard error: partial (data is missing), unread (nothing could be read), unsupported (the scanner does
not implement the group), not-applicable (this system or the scanned directory cannot have it) and unknown (the
scanner does not report it).

The scanner 'quorvah' is taken from --toolkit, else from the toolkit that /etc/zav/zav.ini names, else from the
toolkit that is bundled with this command. Only the bundled scanner supports --root, --sanitize, --no-volatile and
--pretty, so an installed toolkit is then not used.

--sanitize makes an inventory that can be shared. Within it, equal values have equal hashes. The key of the hashes is
random and not kept, so they are different in each inventory.

--output replaces an existing file and does not follow a link. Pipes, devices and directories are refused.

Examples:
  sudo zav hw                                      root may read serial numbers and memory modules
  zav hw --group "Software Packages" --all
  zav hw --group 25 --format csv --output packages.csv
  zav hw --root /mnt/image --format json           scan the system below /mnt/image instead of this machine
  zav hw --sanitize --format json -o share.json    write an inventory that does not identify the machine

Exit status: 0 the inventory is written, 1 the command failed, 2 the command line is wrong, 3 the inventory is
written, but a group is unread or partial for another reason than a missing permission, or nothing could be read of a
group that was named by --group.)";

constexpr const char* kSoftwareFooter =
    R"(A signature file describes software: which packages, files or contents show that it is installed, and which values,
such as its version, to report. A directory stands for all *.xml files in it. Files that can be joined are evaluated
in one run. Without FILE, the signatures that come with the command are used, and all directories are searched
(FileSystem.wholeTree=true). --list shows what they recognise.

--variable NAME=VALUE presets a variable for all signatures, NAME=VALUE@GUID for one signature. The text after the
last '@' is an identifier if a signature in the files has it, or if it has the form
6f0d1c52-8f0e-4c39-9a55-0b5a3d1f0001. A variable has one value per run.
--config PLUGIN.ATTRIBUTE=VALUE changes a setting of the scanner.
--guid GUID shows only the results of this signature (case-insensitive). If it does not match, a message says so, the
result is empty, and the exit status is 0. An identifier that is in none of the files is refused.
--unmanaged shows only results that no package manager of the system owns, and those that do not report it.

Formats:
  table  for people: a line per match with its name, version, place and package; "none" if no package manager owns it,
         "unknown" if the signature does not report it. Packages of programming languages follow. With --details, a
         paragraph per match with all values and the first piece of evidence.
  json   {"scan": {...}, "complete": true, "results": [{"guid", "name", "cpe", "purl", "variables": {...},
         "metadata": {...}, "evidence": [...]}, ...], "undecided": [{"guid", "name"}, ...], "warnings": [...]}; all
         values are strings
  csv    one record per variable: result,guid,name,variable,value. Results are numbered from 0. The variables _cpe and
         _purl identify the product. A signature of which it is unknown whether it matches has a record without a
         number and with the variable _status.
  xml    the format of the scanner: one element MatchedSignature per match; complete="false" if one may be missing

What could not be examined, such as an unreadable file, is reported on standard error in every format.

The scanner 'quorvis' is taken from --toolkit, else from the toolkit that /etc/zav/zav.ini names, else from the
toolkit that is bundled with this command. Only the bundled scanner supports --root, so an installed toolkit is then
not used.

Examples:
  zav sw                                         all software that the signatures of the command recognise
  zav sw --unmanaged                             only what no package manager knows
  zav sw signatures.xml --format json --output software.json
  zav sw signatures.xml --variable minVersion=3.11 --config FileSystem.maxDepth=6
  zav sw signatures.xml --root /mnt/image        scan the system below /mnt/image instead of this machine
  zav sw --list                                  show what the signatures of the command recognise
  zav sw --suggest /usr/sbin/nginx > nginx.xml   draft a signature, to be corrected and tested
  zav sw --check signatures.xml                  show whether the file is valid, and the lines of the errors
  zav sw --explain GUID signatures.xml           show why this signature matches or not

Exit status: 0 the signatures are evaluated, with or without a match, or the files are valid; 1 the command failed, or
a file is not valid; 2 the command line is wrong, or a file cannot be read; 3 the results are written, but of a
signature it is unknown whether it matches, or results may be missing. Single files that are damaged or that may not
be read only cause warnings, unless --guid is given.)";

constexpr const char* kSbomFooter =
    R"(The document contains the operating system, the installed packages, the software that the signatures recognise, and
packages of programming languages, with the evidence for each. A package contains the software of its files. FILE and
--config have the same meaning as in 'zav sw'.

Formats:
  cyclonedx  CycloneDX 1.6 in JSON
  spdx       SPDX 2.3 in JSON

The same machine in the same state gives the same document: everything is sorted, and the serial number or namespace
is derived from the content. CycloneDX has a time only if the variable SOURCE_DATE_EPOCH gives one. SPDX requires a
time; without that variable it is the current one.

--hashes adds SHA-1 and SHA-256 of the files in the evidence, except those that other users may not read.

Examples:
  zav sbom                                       print the bill of this machine
  zav sbom --root /mnt/image -o image.cdx.json   of the system below /mnt/image
  zav sbom --format spdx --hashes -o machine.spdx.json

Exit status: 0 the document is written, 1 the command failed, 2 the command line is wrong, 3 the document is written,
but software may be missing because something could not be read.)";

constexpr const char* kDiffFooter =
    R"(OLD and NEW are files that 'zav hw --format json' or '--format xml' wrote, or a scanner; '-' is standard input. Values
that change while the machine stays the same are left out, and so is the group ScanInfo. Instances are recognised by
their keys, such as the path of a disk.

Formats:
  text   for people: '-' an instance that is gone, '+' a new one; below a changed one, its fields with old and new value
  json   {"old": {...}, "new": {...}, "same": false, "machineDiffers": true, "groups": {"Storage": {"added": [...],
         "removed": [...], "changed": [{"key": {...}, "fields": {"Model": {"old": "A", "new": "B"}}}]}}, "notes": [...]}

If root wrote one inventory and another user the other, what only root sees is listed separately, as "needs": "root" in
JSON. Likewise "live": values that files below a directory do not have. --ignore-access leaves both out. What could not
be compared, such as a group that is only in one file, is reported on standard error.

Examples:
  zav diff monday.json tuesday.json
  zav hw --format json | zav diff saved.json -    what has changed since

Exit status: 0 no difference, 1 differences were written, 2 the command failed.)";

constexpr const char* kCaptureFooter =
    R"(FILE is an archive of the files that a hardware scan of this machine, or of the directory of --root, reads: tables of
the firmware, attributes of devices, lists of packages and accounts. Unpacked, it can be scanned again:

  zav capture machine.tar.zst
  mkdir machine && tar -C machine -xf machine.tar.zst
  zav hw --root machine

This gives the same inventory, except what only a running machine tells, such as free space of file systems. The end of
the name decides about the compression: .tar.zst, .tar.gz or .tar. Only its owner may read the file, because it contains
serial numbers, addresses and names of accounts. Hashes of passwords, and passwords in the configuration of printers,
guests and the kernel's command line, are left out. A scan as root reads more.

--sanitize replaces the private values of the inventory, wherever they are in the files, by others of the same form.
Files with private values beyond those, such as records of logins and tables of network addresses, are empty then.

Exit status: 0 the archive is written, 1 the command failed, 2 the command line is wrong, 3 the archive is written, but
something could not be read for another reason than a missing permission.)";

constexpr const char* kGroupsFooter =
    R"(Groups that the scanner does not gather, or that this machine cannot have, are marked. Without a scanner, the groups
are listed without marks. The fields of a group are listed with type, unit and meaning, as the scanner that comes with
this command has them; the scanner of another toolkit may have others.
Exit status: 0 the list is written, 1 the command failed, 2 the command line is wrong.)";

constexpr const char* kDoctorFooter =
    R"(Prints one line per check: ok, note (it works, but there is something to know) or problem (no inventory is possible).
The checks named 'ownership' report which other users could replace a scanner, with a command line that fixes it.
Root does not start such a scanner.
Exit status: 0 an inventory can be taken, 1 it cannot, 2 the command line is wrong.)";

// The name of the format is case-insensitive.
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
    addFormat(command, format, {"table", "json", "csv", "xml"}, "table (the default), json, csv or xml");
    command.add_flag("--csv-raw", options.csvRaw,
                     "In csv, do not mark values that look like formulas with an apostrophe");
    addPlaces(command, options);
}

void addHardware(CLI::App& app, Options& options, std::string& format) {
    CLI::App& command = *app.add_subcommand("hw", "Take an inventory of the hardware and the system");
    command.footer(kHardwareFooter);
    addRepeated(command, "-g,--group", options.groups, "GROUP", "Scan only this group; may be repeated");
    addScan(command, options, format);
    command.add_flag("--all", options.all, "Show everything in the table");
    command.add_flag("--sanitize", options.sanitize,
                     "Hash serial numbers, addresses and names of the machine and its users");
    command.add_flag("--no-volatile", options.noVolatile,
                     "Omit values that change while the machine stays the same");
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

void requireAlone(const CLI::App& software, const char* flag, const std::vector<const char*>& others) {
    if (software.count(flag) == 0) return;
    for (const char* option : others) {
        if (software.count(option) > 0)
            throw Failure(kExitBadUsage, fmt::format("{} and {} cannot be used together", flag, option));
    }
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
    std::string bill = "cyclonedx";
    std::string diff = "text";
    CLI::App app("Takes an inventory of the hardware and software of this machine.", "zav");
    app.footer(kMainFooter);
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", "zav " ZAV_CLI_VERSION);
    app.get_formatter()->column_width(26);
    addHardware(app, options, format);
    addSoftware(app, options, format);
    addSbom(app, options, bill);
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
    } catch (const CLI::ParseError& error) {
        throw Failure(kExitBadUsage, fmt::format("{} (see '{} --help')", error.what(), parsedCommand(app)));
    }
    if (app.get_subcommands().empty())
        throw Failure(
            kExitBadUsage,
            "a command is missing: hw, sw, sbom, diff, capture, groups or doctor (see 'zav --help')");
    // Options that filter or format results have no effect if there are no results.
    const CLI::App& software = *app.get_subcommand("sw");
    requireAlone(software, "--check",
                 {"--suggest", "--list", "--explain", "--variable", "--config", "--guid", "--unmanaged",
                  "--details", "--format", "--output", "--root"});
    requireAlone(software, "--suggest",
                 {"FILE", "--list", "--explain", "--variable", "--config", "--guid", "--unmanaged",
                  "--details", "--format"});
    requireAlone(software, "--list",
                 {"--explain", "--variable", "--config", "--guid", "--unmanaged", "--details", "--root"});
    requireAlone(software, "--explain", {"--guid", "--unmanaged", "--details", "--format", "--output"});
    if (options.output == "-") options.output.reset();
    options.format = formatNamed(format);
    if (options.command == Command::Diff)
        options.format = lowerCase(diff) == "json" ? Format::Json : Format::Table;
    options.bill = lowerCase(bill) == "spdx" ? BillFormat::Spdx : BillFormat::CycloneDx;
    if (options.list && options.format == Format::Xml)
        throw Failure(kExitBadUsage, "--list has the formats table, json and csv (see 'zav sw --help')");
    options.verbosity = verbosityOf(app);
    return options;
}

}  // namespace zavcli
