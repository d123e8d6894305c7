#include "toolkit/quorvis/settings/Configuration.h"

#include <new>
#include <optional>
#include <string_view>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/DocumentText.h"
#include "toolkit/quorvis/formats/XmlParser.h"

namespace toolkit::quorvis {

namespace {

constexpr unsigned kDeepest = 1'000;
constexpr std::size_t kMost = 100'000;  // settings and variables

struct TooMany {};

std::string valueOf(const char* const* attributes, std::string_view name) {
    for (; *attributes != nullptr; attributes += 2) {
        if (attributes[0] == name) return attributes[1];
    }
    return {};
}

// Gathers from a document that is well-formed.
class Gatherer : public XmlHandler {
  public:
    explicit Gatherer(Configuration& configuration) : configuration_(configuration) {}

    void onStart(std::string_view name, const char* const* attributes, std::size_t /*offset*/) override {
        plugins_.push_back(plugins_.empty() ? std::string() : plugins_.back());
        if (name == "Plugin") plugins_.back() = valueOf(attributes, "name");
        if (name == "Variable" || name == "Attribute") countOne();
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
    void countOne() const {
        if (configuration_.presets.size() + configuration_.settings.size() >= kMost) throw TooMany();
    }

    Configuration& configuration_;
    std::vector<std::string> plugins_;  // the plug-in around each open element
};

// Takes what stands between `before` and the first `after` from the front.
std::optional<std::string_view> takeBetween(std::string_view& text, std::string_view before,
                                            std::string_view after) {
    if (!text.starts_with(before)) return std::nullopt;
    const std::size_t end = text.find(after, before.size());
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view found = text.substr(before.size(), end - before.size());
    text.remove_prefix(end + after.size());
    return found;
}

// Takes off the "/>" of an element that ends the line, with the blanks and the quote before it.
bool takeEnd(std::string_view& text) {
    for (const std::string_view end : {"\" />", "\"/>"}) {
        if (text.ends_with(end)) {
            text.remove_suffix(end.size());
            return true;
        }
    }
    return false;
}

// Gathers from the lines of a document whose values may hold anything, quotes as well.
class LineGatherer {
  public:
    LineGatherer(Configuration& configuration, bool utf8) : configuration_(configuration), utf8_(utf8) {}

    void take(std::string_view line) {
        if (configuration_.presets.size() + configuration_.settings.size() >= kMost) throw TooMany();
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
    Gatherer gatherer(configuration);
    const std::optional<XmlFault> fault = parseXml(document, kDeepest, gatherer);
    if (!fault) return;

    configuration = {};
    configuration.events.push_back({EventCode::Config, path, describe(document, *fault), {}, {}});
    LineGatherer lines(configuration, document.utf8);
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
