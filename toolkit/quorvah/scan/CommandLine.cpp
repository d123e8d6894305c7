#include "toolkit/quorvah/scan/CommandLine.h"

#include <string_view>

#include "toolkit/machine/text/OptionParser.h"

namespace toolkit::quorvah {

const char* const kUsage =
    "Usage: quorvah -c CONFIG -o OUTPUT [option...]\n"
    "       quorvah --list-fields [--format json]\n"
    "Takes the hardware inventory of this machine.\n"
    "\n"
    "  -c, --config FILE  XML file whose elements <Group Name=\"...\"/> name the groups to gather\n"
    "  -o, --output FILE  XML file to write the inventory to\n"
    "      --root DIR     scan the machine whose files lie below DIR instead of this one\n"
    "      --record FILE  with --root, also write the files that were read to a new cpio archive; with "
    "--root /\n"
    "                     these are the files of this machine\n"
    "      --ids DIR      take the names of PCI and USB devices from the files in DIR\n"
    "      --pretty       break and indent the lines of the output\n"
    "      --raw          keep firmware texts that are placeholders\n"
    "      --empty-slots  report the slots for memory modules that are empty too\n"
    "      --no-volatile  omit values that change while the machine stays the same\n"
    "      --sanitize     hash serial numbers, addresses and names of the machine and its users\n"
    "      --sandbox optional\n"
    "                     continue if the system does not let the scanner give up all rights that it\n"
    "                     does not need\n"
    "      --list-fields  describe the fields of all groups\n"
    "      --format text|json\n"
    "                     the format of --list-fields (default: text)\n"
    "  -h, --help         show this text\n"
    "  -V, --version      show the version\n"
    "\n"
    "These environment variables are for programs that cannot add options. A program that runs with other\n"
    "rights than its caller ignores them.\n"
    "  QUORVAH_ROOT=DIR            --root DIR\n"
    "  QUORVAH_RECORD=FILE         --record FILE\n"
    "  QUORVAH_SANDBOX=optional    --sandbox optional\n"
    "  QUORVAH_PRETTY=1            --pretty; empty, 0 and false mean no\n"
    "  QUORVAH_NO_VOLATILE=1       --no-volatile, likewise\n"
    "  QUORVAH_SANITIZE=1          --sanitize, likewise\n"
    "\n"
    "Exit status: 0 if the output was written, 1 if it could not be written or the sandbox is incomplete,\n"
    "2 if the command line or the configuration is invalid.\n";

namespace {

std::string problemOfSandbox(const std::string& mode) {
    const bool valid = mode == "optional" || mode == "required";
    return valid ? "" : "--sandbox is either required or optional";
}

// The value of a variable; empty if it is not set.
std::string_view valueOf(const Environment& environment, const char* variable) {
    const char* const value = environment(variable);
    return value == nullptr ? std::string_view() : value;
}

// A word that is not known turns the option on: a caller who wrote "yes" expects that values are hidden.
bool isOn(std::string_view value) {
    return !value.empty() && value != "0" && value != "false";
}

void addEnvironment(const Environment& environment, Options& options) {
    if (options.root.empty()) options.root = valueOf(environment, "QUORVAH_ROOT");
    if (options.record.empty()) options.record = valueOf(environment, "QUORVAH_RECORD");
    options.pretty = options.pretty || isOn(valueOf(environment, "QUORVAH_PRETTY"));
    options.noVolatile = options.noVolatile || isOn(valueOf(environment, "QUORVAH_NO_VOLATILE"));
    options.sanitize = options.sanitize || isOn(valueOf(environment, "QUORVAH_SANITIZE"));
}

std::string problemOfFormat(const std::string& format) {
    return format == "text" || format == "json" ? "" : "--format is either text or json";
}

}  // namespace

CommandLine parseCommandLine(int count, char* const* arguments, const Environment& environment) {
    CommandLine line;
    Options& options = line.options;
    std::string sandbox;
    std::string format;
    bool listFields = false;
    bool help = false;
    bool version = false;
    const Option table[] = {
        {.name = "config", .letter = 'c', .value = &options.config},
        {.name = "output", .letter = 'o', .value = &options.output},
        {.name = "root", .value = &options.root},
        {.name = "record", .value = &options.record},
        {.name = "ids", .value = &options.ids},
        {.name = "pretty", .given = &options.pretty},
        {.name = "raw", .given = &options.raw},
        {.name = "empty-slots", .given = &options.emptySlots},
        {.name = "no-volatile", .given = &options.noVolatile},
        {.name = "sanitize", .given = &options.sanitize},
        {.name = "sandbox", .value = &sandbox, .check = problemOfSandbox},
        {.name = "list-fields", .given = &listFields},
        {.name = "format", .value = &format, .check = problemOfFormat},
        {.name = "help", .letter = 'h', .given = &help, .last = true},
        {.name = "version", .letter = 'V', .given = &version, .last = true},
    };
    line.message = parseOptions(count, arguments, table);
    if (sandbox.empty()) sandbox = valueOf(environment, "QUORVAH_SANDBOX");
    options.sandboxOptional = sandbox == "optional";
    addEnvironment(environment, options);
    if (help) line.action = Action::Help;
    if (version) line.action = Action::Version;
    line.json = format == "json";
    if (listFields && !help && !version) line.action = Action::ListFields;
    if (line.message.empty() && line.action == Action::Scan) {
        if (!format.empty()) {
            line.message = "--format needs --list-fields";
        } else if (options.config.empty()) {
            line.message = "no configuration file given (-c)";
        } else if (options.output.empty()) {
            line.message = "no output file given (-o)";
        } else if (!options.record.empty() && options.root.empty()) {
            line.message = "--record needs --root; with --root / it records this machine";
        }
    }
    if (!line.message.empty()) line.action = Action::Refuse;
    return line;
}

}  // namespace toolkit::quorvah
