#include "toolkit/quorvis/settings/CommandLine.h"

#include <getopt.h>

#include <utility>

namespace toolkit::quorvis {

const char* const kUsage =
    "Usage: quorvis -c CONFIG -o OUTPUT -e WARNINGS -i SIGNATURES [option...]\n"
    "       quorvis --check -i SIGNATURES\n"
    "Recognises installed software by signatures.\n"
    "\n"
    "  -c, --config FILE      XML file with preset variables and settings\n"
    "  -o, --output FILE      XML file to write the matching signatures to\n"
    "  -e, --warnings FILE    XML file to write the events to: what could not be read or was cut short\n"
    "  -i, --signatures FILE  XML file with the signatures to look for\n"
    "      --root DIR         scan the machine whose files lie below DIR instead of this one;\n"
    "                         the environment variable QUORVIS_ROOT does the same\n"
    "      --check            only tell what is wrong with the signatures\n"
    "      --explain GUID     tell how the conditions of this signature came out\n"
    "  -h, --help             show this text\n"
    "  -V, --version          show the version\n"
    "\n"
    "Exit status: 0 the signatures are evaluated, 1 a file could not be written, 2 the command\n"
    "line or the configuration is at fault, 3 the signatures are missing or invalid.\n";

namespace {

enum LongOption : int { kRoot = 256, kCheck, kExplain };

constexpr option kOptions[] = {
    {"config", required_argument, nullptr, 'c'},
    {"output", required_argument, nullptr, 'o'},
    {"warnings", required_argument, nullptr, 'e'},
    {"signatures", required_argument, nullptr, 'i'},
    {"root", required_argument, nullptr, kRoot},
    {"check", no_argument, nullptr, kCheck},
    {"explain", required_argument, nullptr, kExplain},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'V'},
    {nullptr, 0, nullptr, 0},
};

CommandLine refused(std::string message) {
    CommandLine line;
    line.action = Action::Refuse;
    line.message = std::move(message);
    return line;
}

// The text option that `code` stands for; null when it is none.
std::string* textOption(Options& options, int code) {
    switch (code) {
        case 'c':
            return &options.config;
        case 'o':
            return &options.output;
        case 'e':
            return &options.warnings;
        case 'i':
            return &options.signatures;
        case kRoot:
            return &options.root;
        case kExplain:
            return &options.explain;
        default:
            return nullptr;
    }
}

// The first file that must be given and is not; null when there is none.
const char* missingFile(const CommandLine& line) {
    const Options& options = line.options;
    if (options.signatures.empty()) return "no signatures file given (-i)";
    if (line.action == Action::Check) return nullptr;
    if (options.config.empty()) return "no configuration file given (-c)";
    if (options.output.empty()) return "no output file given (-o)";
    return options.warnings.empty() ? "no warnings file given (-e)" : nullptr;
}

}  // namespace

CommandLine parseCommandLine(int count, char* const* arguments, const char* environmentRoot) {
    CommandLine line;
    Options& options = line.options;
    ::optind = 0;  // start over
    for (;;) {
        const int next = ::optind == 0 ? 1 : ::optind;
        const int code = ::getopt_long(count, arguments, ":c:o:e:i:hV", kOptions, nullptr);
        if (code == -1) break;
        if (code == ':') return refused(std::string("option ") + arguments[next] + " needs a value");
        if (code == '?') return refused(std::string("unknown option ") + arguments[next]);
        if (code == 'h' || code == 'V') {
            line.action = code == 'h' ? Action::Help : Action::Version;
            return line;
        }
        if (code == kCheck) line.action = Action::Check;
        if (std::string* const text = textOption(options, code)) {
            if (*::optarg == '\0')
                return refused(std::string("option ") + arguments[next] + " needs a value");
            *text = ::optarg;
        }
    }
    if (::optind < count) return refused(std::string("unexpected argument ") + arguments[::optind]);
    if (const char* const missing = missingFile(line)) return refused(missing);
    if (options.root.empty() && environmentRoot != nullptr) options.root = environmentRoot;
    return line;
}

}  // namespace toolkit::quorvis
