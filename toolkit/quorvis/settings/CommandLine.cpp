#include "toolkit/quorvis/settings/CommandLine.h"

#include "toolkit/machine/text/OptionParser.h"

namespace toolkit::quorvis {

const char* const kUsage =
    "Usage: quorvis -c CONFIG -o OUTPUT -e WARNINGS -i SIGNATURES [option...]\n"
    "       quorvis --check -i SIGNATURES\n"
    "Recognises installed software by signatures.\n"
    "\n"
    "  -c, --config FILE      XML file with preset variables and settings\n"
    "  -o, --output FILE      XML file to write the matching signatures to\n"
    "  -e, --warnings FILE    XML file to write the events to: what could not be read or was truncated\n"
    "  -i, --signatures FILE  XML file with the signatures to look for\n"
    "      --root DIR         scan the machine whose files lie below DIR instead of this one;\n"
    "                         the environment variable QUORVIS_ROOT does the same\n"
    "      --check            only report the problems of the signatures\n"
    "      --explain GUID     show the results of the conditions of this signature\n"
    "  -h, --help             show this text\n"
    "  -V, --version          show the version\n"
    "\n"
    "Exit status: 0 the signatures are evaluated, 1 a file could not be written, 2 the command\n"
    "line or the configuration is invalid, 3 the signatures are missing or invalid.\n";

namespace {

// Reports the first missing file; empty when all required files are given.
std::string problemOf(const CommandLine& line) {
    const Options& options = line.options;
    if (options.signatures.empty()) return "no signatures file given (-i)";
    if (line.action == Action::Check) return {};
    if (options.config.empty()) return "no configuration file given (-c)";
    if (options.output.empty()) return "no output file given (-o)";
    return options.warnings.empty() ? "no warnings file given (-e)" : "";
}

}  // namespace

CommandLine parseCommandLine(int count, char* const* arguments, const char* environmentRoot) {
    CommandLine line;
    Options& options = line.options;
    bool check = false;
    bool help = false;
    bool version = false;
    const Option table[] = {
        {.name = "config", .letter = 'c', .value = &options.config},
        {.name = "output", .letter = 'o', .value = &options.output},
        {.name = "warnings", .letter = 'e', .value = &options.warnings},
        {.name = "signatures", .letter = 'i', .value = &options.signatures},
        {.name = "root", .value = &options.root},
        {.name = "check", .given = &check},
        {.name = "explain", .value = &options.explain},
        {.name = "help", .letter = 'h', .given = &help, .last = true},
        {.name = "version", .letter = 'V', .given = &version, .last = true},
    };
    line.message = parseOptions(count, arguments, table);
    if (check) line.action = Action::Check;
    if (help) line.action = Action::Help;
    if (version) line.action = Action::Version;
    if (line.message.empty() && !help && !version) line.message = problemOf(line);
    if (!line.message.empty()) line.action = Action::Refuse;
    if (options.root.empty() && environmentRoot != nullptr) options.root = environmentRoot;
    return line;
}

}  // namespace toolkit::quorvis
