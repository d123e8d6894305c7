// Parses the command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/scan/LogPrinter.h"

namespace zavcli {

enum class Command { Hardware, Software, Groups, Doctor };
enum class Format { Table, Json, Csv, Xml };

struct Options {
    Command command = Command::Hardware;
    std::vector<std::string> groups;      // as typed
    std::vector<std::string> signatures;  // files and directories
    std::vector<std::string> variables;   // as typed
    std::vector<std::string> settings;    // as typed
    std::vector<std::string> guids;       // results to show; empty for all
    bool check = false;                   // only check whether the files are valid
    std::optional<std::string> explain;   // explain how this signature is decided
    Format format = Format::Table;
    bool csvRaw = false;  // do not protect values that look like formulas
    bool all = false;
    std::optional<std::string> output;
    std::optional<std::string> toolkit;
    std::optional<std::string> root;
    Verbosity verbosity = Verbosity::Errors;
};

// The text that the command line asks for, such as that of --help.
struct HelpText {
    std::string text;
};

// Throws Failure (bad usage).
std::variant<Options, HelpText> parseOptions(int argc, const char* const* argv);

}  // namespace zavcli
