#include "toolkit/machine/text/KeyFile.h"

#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

bool opensGroup(std::string_view line, std::string_view group) {
    return line.size() == group.size() + 2 && line.back() == ']' && line.substr(1, group.size()) == group;
}

}  // namespace

std::string_view keyFileValue(std::string_view text, std::string_view group, std::string_view key) {
    bool inside = false;
    std::string_view line;
    while (nextLine(text, line)) {
        line = trimmed(line);
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[') {
            inside = opensGroup(line, group);
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inside || equals == std::string_view::npos) continue;
        if (trimmed(line.substr(0, equals)) == key) return trimmed(line.substr(equals + 1));
    }
    return {};
}

}  // namespace toolkit
