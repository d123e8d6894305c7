// The metadata that package managers of programming languages install or write. All of it is read as a whole.
#include <algorithm>
#include <optional>
#include <string>

#include "kest/Ascii.h"
#include "toolkit/machine/packages/PackageUrl.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/Components.h"
#include "toolkit/quorvis/formats/Records.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kDirectory = "node_modules/";  // of packages of npm

struct Key {
    std::string_view steps;  // "@" is the name of the record
    bool required = true;
};

// Reads the records of a document and makes a component of each. `make` returns false for records that are none.
template <class Make>
void addRecords(std::string_view format, std::string_view text, std::string_view each,
                std::initializer_list<Key> keys, const ComponentLimits& limits,
                const ProgressCheck& checkProgress, ComponentList& list, Make make) {
    RecordRequest request;
    request.each = parseKeySteps(each);
    request.firstCounts = each == ".";
    request.limit = limits.components;
    for (const Key& key : keys) {
        const bool name = key.steps == "@";
        request.keys.push_back({name ? KeySteps() : parseKeySteps(key.steps), name, key.required});
    }
    const Records found = readRecords(format, text, request, checkProgress);
    if (list.problem.empty()) list.problem = found.problem;
    list.tooLarge = list.tooLarge || found.tooLarge;
    list.tooMany = list.tooMany || found.tooMany;
    for (const Record& record : found.records) {
        Component component;
        component.role = "dependency";
        if (make(record, component)) list.add(std::move(component), limits.components);
    }
}

// A leading "v" before a number is not part of the version.
std::string plainVersion(std::string_view version) {
    if (version.size() > 1 && version[0] == 'v' && version[1] >= '0' && version[1] <= '9')
        version.remove_prefix(1);
    return std::string(version);
}

// "@scope/name" has a scope.
void nameNpmPackage(Component& component, std::string_view name, std::string_view version) {
    component.name = name;
    component.version = version;
    const std::size_t slash = name.starts_with('@') ? name.find('/') : std::string_view::npos;
    if (slash != std::string_view::npos) component.group = name.substr(0, slash);
    component.purl = packageUrl("npm", component.group,
                                slash == std::string_view::npos ? name : name.substr(slash + 1), version, {});
}

// Of the first version of package-lock.json: {"dependencies": {NAME: {"version": ..., "dependencies": ...}}}.
void addNestedNpm(std::string_view text, const ComponentLimits& limits, const ProgressCheck& checkProgress,
                  ComponentList& list) {
    constexpr int kMaxLevels = 8;  // of packages within packages
    const std::string oneLevel = "dependencies.*";
    std::string each = oneLevel;
    for (int level = 0; level < kMaxLevels; ++level, each += "." + oneLevel) {
        const std::size_t known = list.components.size();
        addRecords("json", text, each, {{"@"}, {"version"}, {"dev", false}}, limits, checkProgress, list,
                   [](const Record& record, Component& component) {
                       if (record.values[1] == "true") component.role = "build";
                       nameNpmPackage(component, record.items.front(), *record.values[0]);
                       return !component.name.empty();
                   });
        if (list.components.size() == known || !list.problem.empty()) break;
    }
}

void namePackage(Component& component, std::string_view urlType, std::string_view name,
                 std::string_view version) {
    component.name = name;
    component.version = version;
    component.purl = packageUrl(urlType, "", name, version, {});
}

// Two fields of a header describe the package.
ComponentList readHeaders(std::string_view text, std::string_view urlType, const Key& name,
                          const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    addRecords("headers", text, "/0", {name, {"version"}}, limits, checkProgress, list,
               [urlType](const Record& record, Component& component) {
                   component.role = "main";
                   namePackage(component, urlType, record.items.front(), *record.values[0]);
                   return true;
               });
    return list;
}

// The first text between quotes after "NAME =" in a line of Ruby.
std::optional<std::string_view> rubyValue(std::string_view line, std::string_view name) {
    const std::size_t at = line.find(name);
    if (at == std::string_view::npos) return std::nullopt;
    std::string_view rest = line.substr(at + name.size());
    if (!trimmed(rest).starts_with('=')) return std::nullopt;
    const std::size_t begin = rest.find_first_of("\"'");
    if (begin == std::string_view::npos) return std::nullopt;
    const std::size_t end = rest.find(rest[begin], begin + 1);
    if (end == std::string_view::npos) return std::nullopt;
    return rest.substr(begin + 1, end - begin - 1);
}

// "Newtonsoft.Json/13.0.1"
bool nameNugetPackage(Component& component, std::string_view key) {
    constexpr std::string_view kRuntime = "runtimepack.";
    if (key.starts_with(kRuntime)) key.remove_prefix(kRuntime.size());
    const std::size_t slash = key.rfind('/');
    if (slash == std::string_view::npos || slash == 0 || slash + 1 == key.size()) return false;
    namePackage(component, "nuget", key.substr(0, slash), key.substr(slash + 1));
    return true;
}

}  // namespace

ComponentList readNpmComponents(std::string_view text, std::string_view /*path*/,
                                const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    addRecords("json", text, ".", {{"name"}, {"version"}}, limits, checkProgress, list,
               [](const Record& record, Component& component) {
                   component.role = "main";
                   nameNpmPackage(component, record.items.front(), *record.values[0]);
                   return !component.name.empty();
               });
    return list;
}

ComponentList readNpmLockComponents(std::string_view text, std::string_view /*path*/,
                                    const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    addRecords("json", text, "packages.*", {{"@"}, {"version"}, {"name", false}, {"dev", false}}, limits,
               checkProgress, list, [](const Record& record, Component& component) {
                   const std::string_view way = record.items.front();
                   const std::size_t at = way.rfind(kDirectory);
                   if (way.empty()) component.role = "main";
                   if (record.values[2] == "true") component.role = "build";
                   const std::string_view name = record.values[1] ? std::string_view(*record.values[1])
                                                 : at == std::string_view::npos
                                                     ? std::string_view()
                                                     : way.substr(at + kDirectory.size());
                   nameNpmPackage(component, name, *record.values[0]);
                   return !name.empty();
               });
    if (list.components.empty() && list.problem.empty()) addNestedNpm(text, limits, checkProgress, list);
    return list;
}

ComponentList readComposerComponents(std::string_view text, std::string_view /*path*/,
                                     const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    std::string_view role = "dependency";
    const auto make = [&role](const Record& record, Component& component) {
        const std::string name = kest::lowerCase(record.items.front());
        component.role = role;
        const std::size_t slash = name.find('/');
        if (slash == std::string::npos) return false;
        component.name = name;
        component.version = plainVersion(*record.values[0]);
        component.purl =
            packageUrl("composer", name.substr(0, slash), name.substr(slash + 1), *record.values[0], {});
        return true;
    };
    const auto add = [&](std::string_view each) {
        addRecords("json", text, each, {{"name"}, {"version"}}, limits, checkProgress, list, make);
    };
    add("packages.*");
    // The first version of installed.json is a list without a frame.
    if (list.components.empty() && list.problem.empty()) add("*");
    role = "build";
    if (list.problem.empty()) add("packages-dev.*");
    return list;
}

ComponentList readPythonComponents(std::string_view text, std::string_view /*path*/,
                                   const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list = readHeaders(text, "pypi", {"name"}, limits, checkProgress);
    for (Component& component : list.components) {
        std::string name = kest::lowerCase(component.name);
        std::ranges::replace(name, '_', '-');
        component.purl = packageUrl("pypi", "", name, component.version, {});
    }
    return list;
}

ComponentList readRComponents(std::string_view text, std::string_view /*path*/, const ComponentLimits& limits,
                              const ProgressCheck& checkProgress) {
    return readHeaders(text, "cran", {"package"}, limits, checkProgress);
}

ComponentList readPerlComponents(std::string_view text, std::string_view /*path*/,
                                 const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    addRecords("json", text, ".", {{"name"}, {"version"}}, limits, checkProgress, list,
               [](const Record& record, Component& component) {
                   component.role = "main";
                   namePackage(component, "cpan", record.items.front(), plainVersion(*record.values[0]));
                   return true;
               });
    return list;
}

ComponentList readGemComponents(std::string_view text, std::string_view /*path*/,
                                const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    Component gem;
    gem.role = "main";
    std::string platform;
    // RubyGems writes "# stub: NAME VERSION PLATFORM DIRECTORIES" into the specifications that it installs.
    constexpr std::string_view kStub = "# stub: ";
    for (std::string_view line; nextLine(text, line) && (gem.name.empty() || gem.version.empty());) {
        if (checkProgress) checkProgress();
        if (line.starts_with(kStub)) {
            line.remove_prefix(kStub.size());
            gem.name = nextWord(line);
            gem.version = nextWord(line);
            platform = nextWord(line);
        }
        if (gem.name.empty()) gem.name = rubyValue(line, ".name").value_or("");
        if (gem.version.empty()) gem.version = rubyValue(line, ".version").value_or("");
    }
    if (gem.name.empty() || gem.version.empty()) return list;
    gem.purl =
        packageUrl("gem", "", gem.name, gem.version, {{"platform", platform == "ruby" ? "" : platform}});
    list.add(std::move(gem), limits.components);
    return list;
}

ComponentList readNugetComponents(std::string_view text, std::string_view /*path*/,
                                  const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    std::string syntax;
    std::string texts[2];
    for (const auto& [select, value] :
         {std::pair("/package/metadata/id", &texts[0]), std::pair("/package/metadata/version", &texts[1])}) {
        const auto selection = XmlSelection::parse(select, syntax);
        SelectedValues found = selectValues(text, *selection, 1, checkProgress);
        if (found.problem) list.problem = "damaged XML, " + *found.problem;
        if (!found.values.empty()) *value = std::move(found.values.front());
    }
    if (texts[0].empty() || texts[1].empty()) return list;
    Component component;
    component.role = "main";
    namePackage(component, "nuget", texts[0], texts[1]);
    list.add(std::move(component), limits.components);
    return list;
}

ComponentList readDotnetComponents(std::string_view text, std::string_view /*path*/,
                                   const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    addRecords("json", text, "libraries.*", {{"@"}, {"type"}}, limits, checkProgress, list,
               [](const Record& record, Component& component) {
                   const std::string& type = *record.values[0];
                   if (type == "project") component.role = "main";
                   return (type == "project" || type == "package" || type == "runtimepack") &&
                          nameNugetPackage(component, record.items.front());
               });
    return list;
}

}  // namespace toolkit::quorvis
