// The command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/Reporter.h"

namespace zavcli {

enum class Command { Hardware, Groups, Doctor };
enum class Format { Table, Json, Csv, Xml };

struct Options {
    Command command = Command::Hardware;
    std::vector<std::string> groups;  // as they were typed
    Format format = Format::Table;
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
