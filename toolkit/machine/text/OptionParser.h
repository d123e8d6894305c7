// Parses the options of a command line.
#pragma once

#include <span>
#include <string>

namespace toolkit {

// An option: with an argument if it has a `value`, else a switch. The members are in the order of a table's columns.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): there are few options.
struct Option {
    const char* name;              // "config" for --config
    char letter = 0;               // 'c' for -c; 0 for an option without a short form
    std::string* value = nullptr;  // receives the argument, which must not be empty
    bool* given = nullptr;         // of a switch: set to true
    bool last = false;             // whether parsing ends here, as with --help
    // Describes the problem of an argument; empty if there is none. May be null.
    std::string (*check)(const std::string& value) = nullptr;
};

// Parses the arguments of main(). No other arguments than options are allowed. Returns the description of the first
// problem; empty if there is none.
std::string parseOptions(int count, char* const* arguments, std::span<const Option> options);

}  // namespace toolkit
