// The command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/scan/Reporter.h"

namespace zavcli {

enum class Command { Hardware, Software, Groups, Doctor };
enum class Format { Table, Json, Csv, Xml };

struct Options {
    Command command = Command::Hardware;
    std::vector<std::string> groups;      // as they were typed
    std::vector<std::string> signatures;  // files and directories
    std::vector<std::string> variables;   // as they were typed
    std::vector<std::string> settings;    // as they were typed
    std::vector<std::string> guids;       // results to show; empty for all
    bool check = false;                   // only tell whether the signatures files are valid
    std::optional<std::string> explain;   // tell how the conditions of this signature come out
    Format format = Format::Table;
    bool csvRaw = false;  // values that look like formulas stay as they are
    bool all = false;
    std::optional<std::string> output;
    std::optional<std::string> toolkit;
    std::optional<std::string> root;
    Verbosity verbosity = Verbosity::Errors;
};

// A command line that asks for a text only, such as --help.
struct HelpText {
    std::string text;
};

// Throws Failure (bad usage).
std::variant<Options, HelpText> parseOptions(int argc, const char* const* argv);

}  // namespace zavcli
