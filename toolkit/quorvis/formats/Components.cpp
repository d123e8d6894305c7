#include "toolkit/quorvis/formats/Components.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr ComponentFormat kFormats[] = {
    {"go", readGoComponents, nullptr, true},   {"rust", readRustComponents, nullptr, true},
    {"jar", readJarComponents, nullptr},       {"composer", nullptr, readComposerComponents},
    {"dotnet", nullptr, readDotnetComponents}, {"gem", nullptr, readGemComponents},
    {"npm", nullptr, readNpmComponents},       {"npm-lock", nullptr, readNpmLockComponents},
    {"nuget", nullptr, readNugetComponents},   {"perl", nullptr, readPerlComponents},
    {"python", nullptr, readPythonComponents}, {"r", nullptr, readRComponents},
};

}  // namespace

const ComponentFormat* componentFormat(std::string_view name) {
    const auto* const found = std::ranges::find(kFormats, name, &ComponentFormat::name);
    return found == std::end(kFormats) ? nullptr : found;
}

std::vector<const ComponentFormat*> programFormats() {
    std::vector<const ComponentFormat*> formats;
    for (const ComponentFormat& format : kFormats) {
        if (format.ofPrograms) formats.push_back(&format);
    }
    return formats;
}

std::string componentFormatNames() {
    std::string names;
    for (const ComponentFormat& format : kFormats) {
        if (!names.empty()) names += &format == std::end(kFormats) - 1 ? " or " : ", ";
        names += format.name;
    }
    return names;
}

bool ComponentList::add(Component component, std::size_t limit) {
    tooMany = tooMany || components.size() >= limit;
    if (tooMany) return false;
    components.push_back(std::move(component));
    return true;
}

}  // namespace toolkit::quorvis
