#include "toolkit/quorvah/scan/CommandLine.h"

#include <getopt.h>

#include <string_view>

namespace toolkit::quorvah {

const char* const kUsage =
    "Usage: quorvah -c CONFIG -o OUTPUT [option...]\n"
    "Takes the hardware inventory of this machine.\n"
    "\n"
    "  -c, --config FILE  XML file whose elements <Group Name=\"...\"/> name the groups to gather\n"
    "  -o, --output FILE  XML file to write the inventory to\n"
    "      --root DIR     scan the machine whose files lie below DIR instead of this one;\n"
    "                     the environment variable QUORVAH_ROOT does the same\n"
    "      --ids DIR      take the names of PCI and USB devices from the files in DIR\n"
    "      --pretty       break and indent the lines of the output\n"
    "      --raw          keep firmware texts that only stand in for a value\n"
    "      --no-volatile  leave out values that change while the machine stays the same\n"
    "      --sanitize     hash serial numbers, addresses and names of the machine and its users\n"
    "      --sandbox optional\n"
    "                     go on where the system does not let the scanner give up all rights that it\n"
    "                     does not need; so does the environment variable QUORVAH_SANDBOX=optional\n"
    "  -h, --help         show this text\n"
    "  -V, --version      show the version\n"
    "\n"
    "Exit status: 0 the output is written, 1 it could not be, or the sandbox is not whole, 2 the command "
    "line or the\n"
    "configuration is at fault.\n";

namespace {

enum LongOption : int { kRoot = 256, kIds, kPretty, kRaw, kNoVolatile, kSanitize, kSandbox };

constexpr option kOptions[] = {
    {"config", required_argument, nullptr, 'c'},
    {"output", required_argument, nullptr, 'o'},
    {"root", required_argument, nullptr, kRoot},
    {"ids", required_argument, nullptr, kIds},
    {"pretty", no_argument, nullptr, kPretty},
    {"raw", no_argument, nullptr, kRaw},
    {"no-volatile", no_argument, nullptr, kNoVolatile},
    {"sanitize", no_argument, nullptr, kSanitize},
    {"sandbox", required_argument, nullptr, kSandbox},
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
        case kRoot:
            return &options.root;
        case kIds:
            return &options.ids;
        default:
            return nullptr;
    }
}

bool* switchOption(Options& options, int code) {
    switch (code) {
        case kPretty:
            return &options.pretty;
        case kRaw:
            return &options.raw;
        case kNoVolatile:
            return &options.noVolatile;
        case kSanitize:
            return &options.sanitize;
        default:
            return nullptr;
    }
}

}  // namespace

CommandLine parseCommandLine(int count, char* const* arguments, const char* environmentRoot) {
    CommandLine line;
    Options& options = line.options;
    ::optind = 0;  // start over
    for (;;) {
        const int next = ::optind == 0 ? 1 : ::optind;
        const int code = ::getopt_long(count, arguments, ":c:o:hV", kOptions, nullptr);
        if (code == -1) break;
        if (code == ':') return refused(std::string("option ") + arguments[next] + " needs a value");
        if (code == '?') return refused(std::string("unknown option ") + arguments[next]);
        if (code == 'h' || code == 'V') {
            line.action = code == 'h' ? Action::Help : Action::Version;
            return line;
        }
        if (code == kSandbox) {
            const std::string_view mode = ::optarg;
            if (mode != "optional" && mode != "required")
                return refused("--sandbox is either required or optional");
            options.sandboxOptional = mode == "optional";
        }
        if (bool* const flag = switchOption(options, code)) *flag = true;
        if (std::string* const text = textOption(options, code)) {
            if (*::optarg == '\0')
                return refused(std::string("option ") + arguments[next] + " needs a value");
            *text = ::optarg;
        }
    }
    if (::optind < count) return refused(std::string("unexpected argument ") + arguments[::optind]);
    if (options.config.empty()) return refused("no configuration file given (-c)");
    if (options.output.empty()) return refused("no output file given (-o)");
    if (options.root.empty() && environmentRoot != nullptr) options.root = environmentRoot;
    return line;
}

}  // namespace toolkit::quorvah
