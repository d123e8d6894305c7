#include "toolkit/quorvis/settings/Settings.h"

#include <array>
#include <charconv>
#include <limits>
#include <new>
#include <optional>
#include <string_view>

#include "kest/Ascii.h"
#include "toolkit/machine/packages/Packages.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/machine/text/Utf8.h"
#include "toolkit/quorvis/formats/XmlReader.h"

namespace toolkit::quorvis {

namespace {

constexpr unsigned kMaxDepth = 1'000;
constexpr std::size_t kMaxEntries = 100'000;  // settings and variables

struct TooMany {};

std::string valueOf(const char* const* attributes, std::string_view name) {
    for (; *attributes != nullptr; attributes += 2) {
        if (attributes[0] == name) return attributes[1];
    }
    return {};
}

// Reads the elements of a well-formed document.
class ElementCollector : public XmlHandler {
  public:
    explicit ElementCollector(Configuration& configuration) : configuration_(configuration) {}

    void onStart(std::string_view name, const char* const* attributes, std::size_t /*offset*/) override {
        plugins_.push_back(plugins_.empty() ? std::string() : plugins_.back());
        if (name == "Plugin") plugins_.back() = valueOf(attributes, "name");
        if (name == "Variable" || name == "Attribute") checkCount();
        if (name == "Variable") {
            configuration_.presets.push_back(
                {valueOf(attributes, "name"), valueOf(attributes, "value"), valueOf(attributes, "guid")});
        }
        if (name == "Attribute") {
            configuration_.settings.push_back(
                {plugins_.back(), valueOf(attributes, "name"), valueOf(attributes, "value")});
        }
    }
    void onEnd() override { plugins_.pop_back(); }
    void onText(std::string_view /*text*/, std::size_t /*offset*/) override {}

  private:
    void checkCount() const {
        if (configuration_.presets.size() + configuration_.settings.size() >= kMaxEntries) throw TooMany();
    }

    Configuration& configuration_;
    std::vector<std::string> plugins_;  // the enclosing plug-in of each open element
};

// Takes `before`, a text and the first `after` from the front. Returns the text.
std::optional<std::string_view> takeBetween(std::string_view& text, std::string_view before,
                                            std::string_view after) {
    if (!text.starts_with(before)) return std::nullopt;
    const std::size_t end = text.find(after, before.size());
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view found = text.substr(before.size(), end - before.size());
    text.remove_prefix(end + after.size());
    return found;
}

// Removes the end of an element and the quote before it from the end of the line.
bool takeEnd(std::string_view& text) {
    for (const std::string_view end : {"\" />", "\"/>"}) {
        if (text.ends_with(end)) {
            text.remove_suffix(end.size());
            return true;
        }
    }
    return false;
}

// Reads the lines of a document whose attribute values are not escaped.
class LineCollector {
  public:
    LineCollector(Configuration& configuration, bool utf8) : configuration_(configuration), utf8_(utf8) {}

    void take(std::string_view line) {
        if (configuration_.presets.size() + configuration_.settings.size() >= kMaxEntries) throw TooMany();
        line = trimmed(line);
        if (const auto plugin = takeBetween(line, "<Plugin name=\"", "\"")) {
            plugin_ = text(*plugin);
        } else if (const auto variable = takeBetween(line, "<Variable name=\"", "\" value=\"")) {
            takeVariable(*variable, line);
        } else if (const auto attribute = takeBetween(line, "<Attribute name=\"", "\" value=\"")) {
            if (takeEnd(line)) configuration_.settings.push_back({plugin_, text(*attribute), text(line)});
        }
    }

  private:
    void takeVariable(std::string_view name, std::string_view rest) {
        constexpr std::string_view kGuid = "\" guid=\"";
        const std::size_t guid = rest.rfind(kGuid);
        if (guid == std::string_view::npos || !takeEnd(rest)) return;
        if (rest.size() < guid + kGuid.size()) return;
        configuration_.presets.push_back(
            {text(name), text(rest.substr(0, guid)), text(rest.substr(guid + kGuid.size()))});
    }
    std::string text(std::string_view bytes) const {
        return utf8_ ? std::string(bytes) : utf8FromLatin1(bytes);
    }

    Configuration& configuration_;
    bool utf8_;
    std::string plugin_;
};

std::string describe(const DocumentText& document, const XmlFault& fault) {
    return "line " + std::to_string(placeIn(document, fault.offset).line) + ": " + fault.text +
           "; its lines are taken literally";
}

void read(const std::string& path, const DocumentText& document, Configuration& configuration) {
    ElementCollector collector(configuration);
    const std::optional<XmlFault> fault = parseXml(document, kMaxDepth, collector);
    if (!fault) return;

    configuration = {};
    configuration.events.push_back({EventCode::Config, path, describe(document, *fault), {}, {}});
    LineCollector lines(configuration, document.utf8);
    std::string_view rest = document.bytes;
    for (std::string_view line; nextLine(rest, line);) lines.take(line);
}

// Takes a decimal number from the front. The rest of the text remains, without surrounding blanks.
std::optional<std::uint64_t> takeNumber(std::string_view& text) {
    text = trimmed(text);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    text = trimmed(text.substr(static_cast<std::size_t>(end - text.data())));
    return number;
}

template <class Number>
bool setNumber(Number& target, std::string_view text, std::uint64_t min, std::uint64_t max) {
    const std::optional<std::uint64_t> number = takeNumber(text);
    if (!number || !text.empty() || *number < min || *number > max) return false;
    target = static_cast<Number>(*number);
    return true;
}

bool setCount(std::uint64_t& target, std::string_view text) {
    return setNumber(target, text, 1, std::numeric_limits<std::uint64_t>::max());
}

// The power of two of a unit: 10 for "K", "KB" and "KiB". None for an unknown unit.
std::optional<unsigned> shiftOf(std::string_view unit) {
    constexpr std::array<std::pair<std::string_view, unsigned>, 4> kUnits = {
        {{"", 0}, {"k", 10}, {"m", 20}, {"g", 30}}};
    for (const auto& [letter, shift] : kUnits) {
        for (const std::string_view tail : {"", "b", "ib"}) {
            if (kest::equalsIgnoringCase(unit, std::string(letter).append(tail))) return shift;
        }
    }
    return std::nullopt;
}

bool setSize(std::uint64_t& target, std::string_view text) {
    const std::optional<std::uint64_t> number = takeNumber(text);
    const std::optional<unsigned> shift = shiftOf(text);
    if (!number || !shift || *number > std::numeric_limits<std::uint64_t>::max() >> *shift) return false;
    target = *number << *shift;
    return true;
}

bool setSeconds(std::chrono::seconds& target, std::string_view text) {
    constexpr std::uint64_t kMaxSeconds = 604'800;  // a week
    const std::optional<std::uint64_t> number = takeNumber(text);
    if (!number || !(text.empty() || kest::equalsIgnoringCase(text, "s")) || *number == 0 ||
        *number > kMaxSeconds)
        return false;
    target = std::chrono::seconds(*number);
    return true;
}

bool setBoolean(bool& target, std::string_view text) {
    text = trimmed(text);
    const bool yes =
        kest::equalsIgnoringCase(text, "true") || kest::equalsIgnoringCase(text, "yes") || text == "1";
    if (!yes && !kest::equalsIgnoringCase(text, "false") && !kest::equalsIgnoringCase(text, "no") &&
        text != "0")
        return false;
    target = yes;
    return true;
}

bool setText(std::string& target, std::string_view text) {
    target = text;
    return !text.empty();
}

bool addPath(std::vector<std::string>& target, std::string_view text) {
    if (!text.starts_with('/')) return false;
    target.emplace_back(text);
    return true;
}

// Adds names that are separated by commas or blanks.
bool addTypes(std::vector<std::string>& target, std::string_view text) {
    std::vector<std::string> added = target;
    while (!text.empty()) {
        std::string_view field = takeField(text, ',');
        for (std::string_view word = nextWord(field); !word.empty(); word = nextWord(field)) {
            std::string name = kest::lowerCase(word);
            if (!packageTypeNamed(name)) return false;
            added.push_back(std::move(name));
        }
    }
    target = std::move(added);
    return true;
}

bool setDevices(bool& target, std::string_view text) {
    if (!kest::equalsIgnoringCase(trimmed(text), "local")) return setBoolean(target, text);
    target = true;
    return true;
}

bool setOnInvalid(bool& skip, std::string_view text) {
    skip = kest::equalsIgnoringCase(trimmed(text), "skip");
    return skip || kest::equalsIgnoringCase(trimmed(text), "fail");
}

constexpr std::string_view kBoolean = "true or false";
constexpr std::string_view kNumber = "a number of 1 or more";
constexpr std::string_view kSize = "a number of bytes, or of K, M or G";
constexpr std::string_view kPath = "an absolute path";
constexpr std::string_view kText = "a text";

struct Row {
    std::string_view plugin;
    std::string_view attribute;
    std::string_view expected;
    bool (*apply)(Settings& settings, std::string_view value);
};

constexpr Row kRows[] = {
    {"FileSystem", "root", kText,
     [](Settings& s, std::string_view v) { return setText(s.fileSystem.root, v); }},
    {"FileSystem", "maxDepth", "a number from 1 to 64",
     [](Settings& s, std::string_view v) { return setNumber(s.fileSystem.maxDepth, v, 1, 64); }},
    {"FileSystem", "maxEntries", kNumber,
     [](Settings& s, std::string_view v) { return setCount(s.fileSystem.maxEntries, v); }},
    {"FileSystem", "maxEntriesPerDirectory", kNumber,
     [](Settings& s, std::string_view v) { return setCount(s.fileSystem.maxEntriesPerDirectory, v); }},
    {"FileSystem", "maxMatches", kNumber,
     [](Settings& s, std::string_view v) { return setCount(s.fileSystem.maxMatches, v); }},
    {"FileSystem", "maxFileSize", kSize,
     [](Settings& s, std::string_view v) { return setSize(s.fileSystem.maxContentSize, v); }},
    {"FileSystem", "maxHashSize", kSize,
     [](Settings& s, std::string_view v) { return setSize(s.fileSystem.maxHashedSize, v); }},
    {"FileSystem", "crossDevices", "local, true or false",
     [](Settings& s, std::string_view v) { return setDevices(s.fileSystem.crossDevices, v); }},
    {"FileSystem", "remote", kBoolean,
     [](Settings& s, std::string_view v) { return setBoolean(s.fileSystem.remote, v); }},
    {"FileSystem", "exclude", kPath,
     [](Settings& s, std::string_view v) { return addPath(s.fileSystem.exclude, v); }},
    {"FileSystem", "wholeTree", kBoolean,
     [](Settings& s, std::string_view v) { return setBoolean(s.fileSystem.wholeTree, v); }},
    {"Packages", "types", "names of package formats",
     [](Settings& s, std::string_view v) { return addTypes(s.packages.types, v); }},
    {"Packages", "maxFiles", kNumber,
     [](Settings& s, std::string_view v) { return setCount(s.packages.maxFiles, v); }},
    {"Packages", "database", kPath,
     [](Settings& s, std::string_view v) { return v.starts_with('/') && setText(s.packages.database, v); }},
    {"Processes", "enabled", kBoolean,
     [](Settings& s, std::string_view v) { return setBoolean(s.processes.enabled, v); }},
    {"Swid", "enabled", kBoolean,
     [](Settings& s, std::string_view v) { return setBoolean(s.swid.enabled, v); }},
    {"Swid", "directory", kPath,
     [](Settings& s, std::string_view v) { return addPath(s.swid.directories, v); }},
    {"Secrets", "allow", kPath, [](Settings& s, std::string_view v) { return addPath(s.secrets.allow, v); }},
    {"Sandbox", "required", kBoolean,
     [](Settings& s, std::string_view v) { return setBoolean(s.sandbox.required, v); }},
    {"Evaluation", "timeLimit", "a number of seconds from 1 to 604800",
     [](Settings& s, std::string_view v) { return setSeconds(s.evaluation.timeLimit, v); }},
    {"Evaluation", "memoryLimit", kSize,
     [](Settings& s, std::string_view v) { return setSize(s.evaluation.memoryLimit, v); }},
    {"Evaluation", "jobs", "a number from 1 to 64",
     [](Settings& s, std::string_view v) { return setNumber(s.evaluation.jobs, v, 1, 64); }},
    {"Evaluation", "onInvalid", "fail or skip",
     [](Settings& s, std::string_view v) { return setOnInvalid(s.evaluation.skipInvalid, v); }},
    {"Evaluation", "evidence", kBoolean,
     [](Settings& s, std::string_view v) { return setBoolean(s.evaluation.evidence, v); }},
    {"Evaluation", "cache", kPath,
     [](Settings& s, std::string_view v) { return v.starts_with('/') && setText(s.evaluation.cache, v); }},
    {"Evaluation", "progress", kBoolean,
     [](Settings& s, std::string_view v) { return setBoolean(s.evaluation.progress, v); }},
};

// Applies a setting. Returns the problem; empty if there is none.
std::string apply(const PluginSetting& given, Settings& settings) {
    bool knownPlugin = false;
    for (const Row& row : kRows) {
        if (!kest::equalsIgnoringCase(row.plugin, given.plugin)) continue;
        knownPlugin = true;
        if (!kest::equalsIgnoringCase(row.attribute, given.attribute)) continue;
        Settings changed = settings;
        if (!row.apply(changed, given.value)) {
            return std::string("\"").append(given.value).append("\" is not ").append(row.expected);
        }
        settings = std::move(changed);
        return {};
    }
    return knownPlugin ? "the plug-in has no such setting" : "there is no such plug-in";
}

}  // namespace

Configuration readConfiguration(const std::string& path) {
    Configuration configuration;
    try {
        const DocumentText document = readDocument(path);
        configuration.error = document.error;
        if (document.error.empty()) read(path, document, configuration);
    } catch (const TooMany&) {
        configuration.error = path + ": more than 100000 settings and variables";
    } catch (const std::bad_alloc&) {
        configuration.error = path + ": takes more memory than is allowed";
    }
    return configuration;
}

Settings makeSettings(const std::vector<PluginSetting>& given, std::vector<Event>& events) {
    Settings settings;
    for (const PluginSetting& setting : given) {
        const std::string problem = apply(setting, settings);
        if (problem.empty()) continue;
        events.push_back(
            {EventCode::Config, {}, setting.plugin + "/" + setting.attribute + ": " + problem, {}, {}});
    }
    return settings;
}

}  // namespace toolkit::quorvis
