#include "toolkit/quorvis/settings/Configuration.h"

#include <new>
#include <optional>
#include <string_view>

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

}  // namespace toolkit::quorvis
