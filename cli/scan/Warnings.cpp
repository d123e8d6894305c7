#include "cli/scan/Warnings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>

#include "cli/scan/Element.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

constexpr std::size_t kMostNamed = 5;  // signatures of one line

Element elementOf(const Warning& warning) {
    return {"Event", warning.attributes, warning.text, {}};
}

// What is said whatever the signature: "warning: /etc/x: cannot be opened".
std::string lead(const Element& event) {
    std::string text = event.attribute("severity") == "info" ? "note: " : "warning: ";
    const std::string path = event.attribute("path");
    const std::string what = event.text.empty() ? event.attribute("code") : event.text;
    if (!path.empty() && !what.starts_with(path)) text += path + ": ";
    return text + what;
}

std::string signatures(const std::vector<std::string>& guids) {
    const std::size_t named = std::min(kMostNamed, guids.size());
    return fmt::format(" ({} signatures: {}{})", guids.size(),
                       fmt::join(guids.begin(), guids.begin() + static_cast<std::ptrdiff_t>(named), ", "),
                       named < guids.size() ? ", ..." : "");
}

// Whether such an event means that a result may be missing.
bool isGap(const std::string& code, const std::string& severity) {
    if (severity == "info") return false;
    return code == "unresolved" || code == "deadline" || code == "unsupported" || code.starts_with("limit-");
}

// Whether the event is of one of the signatures, or of all; of any when none is named.
bool concerns(const Element& event, const std::vector<std::string>& guids) {
    const std::string guid = lowerCase(event.attribute("guid"));
    return guid.empty() || guids.empty() ||
           std::any_of(guids.begin(), guids.end(),
                       [&](const std::string& wanted) { return lowerCase(wanted) == guid; });
}

}  // namespace

Warning readWarning(const std::string& xml) {
    std::optional<Element> element = readElement(xml);
    if (!element) return {{}, xml};
    // One that says nothing in words and attributes alone is shown as it is.
    if (element->text.empty() && element->attributes.empty()) return {{}, xml};
    return {std::move(element->attributes), std::move(element->text)};
}

std::string warningText(const Warning& warning) {
    const Element element = elementOf(warning);
    std::string text = lead(element);
    std::vector<std::string> where;
    const std::string guid = element.attribute("guid");
    const std::string leaf = element.attribute("leaf");
    const std::string count = element.attribute("count");
    if (!guid.empty()) where.push_back("signature " + guid);
    if (!leaf.empty()) where.push_back("leaf " + leaf);
    if (!count.empty() && count != "1") where.push_back(count + " times");
    if (!where.empty()) text += fmt::format(" ({})", fmt::join(where, ", "));
    return text;
}

std::vector<std::string> warningLines(const std::vector<Warning>& warnings) {
    struct Line {
        const Warning* first = nullptr;
        std::vector<std::string> guids;  // each once
    };
    std::vector<std::string> order;
    std::map<std::string, Line> lines;
    for (const Warning& warning : warnings) {
        const Element element = elementOf(warning);
        const std::string guid = element.attribute("guid");
        const std::string count = element.attribute("count");
        const bool single = !guid.empty() && (count.empty() || count == "1");
        const std::string key = single ? lead(element) : warningText(warning);
        Line& line = lines[key];
        if (line.first == nullptr) {
            line.first = &warning;
            order.push_back(key);
        }
        if (std::find(line.guids.begin(), line.guids.end(), guid) == line.guids.end())
            line.guids.push_back(guid);
    }
    std::vector<std::string> texts;
    for (const std::string& key : order) {
        const Line& line = lines[key];
        texts.push_back(line.guids.size() > 1 ? key + signatures(line.guids) : warningText(*line.first));
    }
    return texts;
}

std::vector<std::string> undecidedSignatures(const std::vector<Warning>& warnings) {
    std::vector<std::string> guids;
    std::set<std::string> known;
    for (const Warning& warning : warnings) {
        const Element element = elementOf(warning);
        const std::string guid = element.attribute("guid");
        if (element.attribute("code") == "unresolved" && !guid.empty() && known.insert(guid).second)
            guids.push_back(guid);
    }
    return guids;
}

bool tellOfGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids) {
    return std::any_of(warnings.begin(), warnings.end(), [&](const Warning& warning) {
        const Element element = elementOf(warning);
        return concerns(element, guids) && isGap(element.attribute("code"), element.attribute("severity"));
    });
}

bool tellOfUnusualGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids) {
    if (!guids.empty()) return tellOfGaps(warnings, guids);
    std::map<std::string, std::set<std::string>> reasons;  // codes, by signature
    for (const Warning& warning : warnings) {
        const Element element = elementOf(warning);
        reasons[lowerCase(element.attribute("guid"))].insert(element.attribute("code"));
    }
    const auto isRule = [&](const Element& unresolved) {
        const std::set<std::string>& codes = reasons[lowerCase(unresolved.attribute("guid"))];
        return codes.size() > 1 && std::all_of(codes.begin(), codes.end(), [](const std::string& code) {
                   return code == "unresolved" || code == "permission" || code == "denied";
               });
    };
    return std::any_of(warnings.begin(), warnings.end(), [&](const Warning& warning) {
        const Element element = elementOf(warning);
        const std::string code = element.attribute("code");
        return isGap(code, element.attribute("severity")) && !(code == "unresolved" && isRule(element));
    });
}

}  // namespace zavcli
