#include "toolkit/machine/text/OptionParser.h"

#include <getopt.h>

#include <vector>

namespace toolkit {

namespace {

constexpr int kFirstLongOption = 256;  // getopt_long() returns this code plus the position of the option

struct GetoptTables {
    std::string letters = ":";  // makes getopt_long() tell a missing argument from an unknown option
    std::vector<option> names;
};

GetoptTables tablesOf(std::span<const Option> options) {
    GetoptTables tables;
    for (std::size_t i = 0; i < options.size(); ++i) {
        const int argument = options[i].value == nullptr ? no_argument : required_argument;
        tables.names.push_back({options[i].name, argument, nullptr, kFirstLongOption + static_cast<int>(i)});
        if (options[i].letter == 0) continue;
        tables.letters += options[i].letter;
        if (argument == required_argument) tables.letters += ':';
    }
    tables.names.push_back({nullptr, 0, nullptr, 0});
    return tables;
}

const Option& optionOf(std::span<const Option> options, int code) {
    if (code >= kFirstLongOption) return options[static_cast<std::size_t>(code - kFirstLongOption)];
    std::size_t i = 0;
    while (options[i].letter != code) ++i;
    return options[i];
}

}  // namespace

std::string parseOptions(int count, char* const* arguments, std::span<const Option> options) {
    const GetoptTables tables = tablesOf(options);
    ::optind = 0;  // resets getopt_long()
    for (;;) {
        const int next = ::optind == 0 ? 1 : ::optind;
        const int code =
            ::getopt_long(count, arguments, tables.letters.c_str(), tables.names.data(), nullptr);
        if (code == -1) break;
        std::string missing = std::string("option ") + arguments[next] + " needs a value";
        if (code == ':') return missing;
        if (code == '?') return std::string("unknown option ") + arguments[next];
        const Option& found = optionOf(options, code);
        if (found.given != nullptr) *found.given = true;
        if (found.value != nullptr) {
            std::string problem = found.check == nullptr ? std::string() : found.check(::optarg);
            if (!problem.empty()) return problem;
            if (*::optarg == '\0') return missing;
            *found.value = ::optarg;
        }
        if (found.last) return {};
    }
    return ::optind < count ? std::string("unexpected argument ") + arguments[::optind] : std::string();
}

}  // namespace toolkit
