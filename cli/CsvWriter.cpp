#include "cli/CsvWriter.h"

#include <fmt/format.h>

#include <iterator>

namespace zavcli {

std::string csvField(std::string_view value) {
    if (value.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(value);
    std::string quoted = "\"";
    for (const char byte : value) {
        if (byte == '"') quoted += '"';
        quoted += byte;
    }
    return quoted + '"';
}

std::string csvText(const Inventory& inventory) {
    std::string text = "group,instance,field,value\r\n";
    for (const Group& group : inventory.groups) {
        fmt::format_to(std::back_inserter(text), "{},,_status,{}\r\n", csvField(group.name),
                       wordOf(group.status.state));
        if (!group.status.reason.empty())
            fmt::format_to(std::back_inserter(text), "{},,_reason,{}\r\n", csvField(group.name),
                           csvField(group.status.reason));
        for (std::size_t i = 0; i < group.instances.size(); ++i) {
            for (const Field& field : group.instances[i]) {
                fmt::format_to(std::back_inserter(text), "{},{},{},{}\r\n", csvField(group.name), i,
                               csvField(field.name), csvField(field.value));
            }
        }
    }
    return text;
}

std::string csvText(const SoftwareReport& report) {
    std::string text = "result,guid,name,variable,value\r\n";
    for (std::size_t i = 0; i < report.results.size(); ++i) {
        const Finding& finding = report.results[i];
        std::vector<Field> variables = finding.variables;
        if (variables.empty()) variables.emplace_back();
        for (const Field& variable : variables) {
            fmt::format_to(std::back_inserter(text), "{},{},{},{},{}\r\n", i, csvField(finding.guid),
                           csvField(finding.name), csvField(variable.name), csvField(variable.value));
        }
    }
    for (const Undecided& signature : report.undecided) {
        fmt::format_to(std::back_inserter(text), ",{},{},_status,unknown\r\n", csvField(signature.guid),
                       csvField(signature.name));
    }
    return text;
}

}  // namespace zavcli
