#include "cli/scan/Warnings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>
#include <string_view>

#include "cli/scan/Xml.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxNamed = 5;   // signatures that a line names
constexpr std::size_t kMaxPlaces = 3;  // files and directories that are named one by one

std::string attribute(const Warning& warning, std::string_view name) {
    return valueOf(warning.attributes, name);
}

// The part that does not depend on the signature, such as "warning: /etc/x: cannot be opened".
std::string commonText(const Warning& warning) {
    std::string text = attribute(warning, "severity") == "info" ? "note: " : "warning: ";
    const std::string path = attribute(warning, "path");
    const std::string what = warning.text.empty() ? attribute(warning, "code") : warning.text;
    if (!path.empty() && !what.starts_with(path)) text += path + ": ";
    text += what;
    const std::string because = attribute(warning, "because");
    if (!because.empty()) text += ", because of " + because;
    return text;
}

std::string signatures(const std::vector<std::string>& guids, std::size_t most) {
    const std::size_t named = std::min(most, guids.size());
    return fmt::format(" ({} signatures: {}{})", guids.size(),
                       fmt::join(guids.begin(), guids.begin() + static_cast<std::ptrdiff_t>(named), ", "),
                       named < guids.size() ? ", ..." : "");
}

// Whether the warning tells of a place that the user of the scanner, or every user, may not see.
bool isPrivate(const Warning& warning) {
    const std::string code = attribute(warning, "code");
    return code == "permission" || code == "denied";
}

// Whether the warning concerns single files only, which cannot be understood or are too large.
bool isOfFile(const Warning& warning) {
    return attribute(warning, "scope") == "file";
}

bool isOfDamagedFile(const Warning& warning) {
    return isOfFile(warning) && !isPrivate(warning) && !isUnresolved(warning);
}

// Whether the warning concerns a file that could not be read in time. Others say that the time is over.
bool isOfLateFile(const Warning& warning) {
    return attribute(warning, "code") == "deadline" && !attribute(warning, "guid").empty();
}

bool isOfUnusedFile(const Warning& warning) {
    return isOfDamagedFile(warning) || isOfLateFile(warning);
}

// Whether the only reason for an undecided signature is what the user may not see. Scanners may give no reasons.
bool isUnresolvedByRights(const Warning& warning) {
    const std::string because = attribute(warning, "because");
    std::string_view reasons = because;
    if (!isUnresolved(warning) || reasons.empty()) return false;
    while (!reasons.empty()) {
        const std::string_view reason = reasons.substr(0, reasons.find(' '));
        if (reason != "permission" && reason != "denied") return false;
        reasons.remove_prefix(std::min(reasons.size(), reason.size() + 1));
    }
    return true;
}

std::size_t countOf(const Warning& warning) {
    return std::max(1UL, std::strtoul(attribute(warning, "count").c_str(), nullptr, 10));
}

// The places of the warnings that pass a test, each once.
std::set<std::string> placesOf(const std::vector<Warning>& warnings, bool (*passes)(const Warning&)) {
    std::set<std::string> places;
    for (const Warning& warning : warnings) {
        const std::string place = attribute(warning, "path");
        if (!place.empty() && passes(warning)) places.insert(place);
    }
    return places;
}

// How many files that were not used the scanner counted without naming them.
std::size_t unnamedFiles(const std::vector<Warning>& warnings) {
    std::size_t count = 0;
    for (const Warning& warning : warnings) {
        if (!isOfUnusedFile(warning) || !attribute(warning, "path").empty()) continue;
        count += countOf(warning);
    }
    return count;
}

// How many private places there are, and whether they are private to this user rather than hidden from all signatures.
struct PrivatePlaces {
    std::size_t count = 0;
    bool byPermission = false;
};

PrivatePlaces privatePlaces(const std::vector<Warning>& warnings) {
    PrivatePlaces places{placesOf(warnings, isPrivate).size(), false};
    for (const Warning& warning : warnings) {
        if (!isPrivate(warning)) continue;
        places.byPermission = places.byPermission || attribute(warning, "code") == "permission";
        // Those that were counted for a signature are mostly the same as those of others.
        if (attribute(warning, "path").empty() && attribute(warning, "guid").empty())
            places.count += countOf(warning);
    }
    return places;
}

std::string privateLine(const PrivatePlaces& places, std::size_t undecided, std::string_view option,
                        bool isRoot) {
    std::string text =
        fmt::format("warning: {} files and directories may not be read or searched", places.count);
    if (undecided > 0)
        text += fmt::format(", so {} {} undecided", undecided,
                            undecided == 1 ? "signature is" : "signatures are");
    if (places.byPermission && !isRoot) text += "; root may read them";
    return text + fmt::format("; {} names them", option);
}

// The first of these places in the order of the warnings, or all if there are few.
std::set<std::string> firstOf(const std::vector<Warning>& warnings, const std::set<std::string>& places) {
    if (places.size() <= kMaxPlaces + 1) return places;
    std::set<std::string> first;
    for (const Warning& warning : warnings) {
        const std::string place = attribute(warning, "path");
        if (first.size() < kMaxPlaces && places.contains(place)) first.insert(place);
    }
    return first;
}

// Whether the warning means that a result may be missing.
bool isGap(const Warning& warning) {
    const std::string code = attribute(warning, "code");
    if (attribute(warning, "severity") == "info") return false;
    return code == "unresolved" || code == "deadline" || code == "unsupported" || code.starts_with("limit-");
}

// Whether the warning concerns one of the signatures, or all signatures. Always true if `guids` is empty.
bool concerns(const Warning& warning, const std::vector<std::string>& guids) {
    const std::string guid = lowerCase(attribute(warning, "guid"));
    return guid.empty() || guids.empty() ||
           std::any_of(guids.begin(), guids.end(),
                       [&](const std::string& wanted) { return lowerCase(wanted) == guid; });
}

}  // namespace

bool isUnresolved(const Warning& warning) {
    return attribute(warning, "code") == "unresolved";
}

Warning readWarning(const std::string& xml) {
    std::optional<XmlElement> element = readXmlElement(xml);
    if (!element) return {{}, xml};
    // An element without text and attributes is shown as XML.
    if (element->text.empty() && element->attributes.empty()) return {{}, xml};
    return {std::move(element->attributes), std::move(element->text)};
}

std::string warningText(const Warning& warning) {
    std::string text = commonText(warning);
    std::vector<std::string> where;
    const std::string guid = attribute(warning, "guid");
    const std::string leaf = attribute(warning, "leaf");
    const std::string count = attribute(warning, "count");
    if (!guid.empty()) where.push_back("signature " + guid);
    if (!leaf.empty()) where.push_back("leaf " + leaf);
    if (!count.empty() && count != "1") where.push_back(count + " times");
    if (!where.empty()) text += fmt::format(" ({})", fmt::join(where, ", "));
    return text;
}

std::vector<std::string> warningLines(const std::vector<Warning>& warnings, Naming naming) {
    struct Line {
        const Warning* first = nullptr;
        std::vector<std::string> guids;  // each once
    };
    std::vector<std::string> order;
    std::map<std::string, Line> lines;
    for (const Warning& warning : warnings) {
        const std::string guid = attribute(warning, "guid");
        const std::string count = attribute(warning, "count");
        const bool single = !guid.empty() && (count.empty() || count == "1");
        const std::string key = single ? commonText(warning) : warningText(warning);
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
        const bool all = naming == Naming::AllUndecided && isUnresolved(*line.first);
        texts.push_back(line.guids.size() > 1
                            ? key + signatures(line.guids, all ? line.guids.size() : kMaxNamed)
                            : warningText(*line.first));
    }
    return texts;
}

std::vector<std::string> conciseWarningLines(const std::vector<Warning>& warnings, std::string_view option,
                                             bool isRoot) {
    const PrivatePlaces places = privatePlaces(warnings);
    const bool manyPrivate = places.count > kMaxPlaces;
    const bool withReasons = std::any_of(warnings.begin(), warnings.end(), [](const Warning& warning) {
        return !attribute(warning, "because").empty();
    });
    const auto isCounted = [&](const Warning& warning) {
        return manyPrivate && (withReasons ? isUnresolvedByRights(warning) : isUnresolved(warning));
    };
    const std::set<std::string> unused = placesOf(warnings, isOfUnusedFile);
    const std::set<std::string> named = firstOf(warnings, unused);
    std::vector<Warning> shown;
    std::copy_if(warnings.begin(), warnings.end(), std::back_inserter(shown), [&](const Warning& warning) {
        if (isUnresolved(warning)) return !isCounted(warning) && !isOfFile(warning);
        if (isPrivate(warning)) return !manyPrivate;
        return !isOfUnusedFile(warning) || named.contains(attribute(warning, "path"));
    });
    std::vector<std::string> lines = warningLines(shown);
    const std::size_t more = unused.size() - named.size() + unnamedFiles(warnings);
    if (more > 0) {
        lines.push_back(fmt::format("warning: {} more {} could not be read or understood; {} names {}", more,
                                    more == 1 ? "file" : "files", option, more == 1 ? "it" : "them"));
    }
    if (manyPrivate) {
        const auto undecided = std::count_if(warnings.begin(), warnings.end(), isCounted);
        lines.push_back(privateLine(places, static_cast<std::size_t>(undecided), option, isRoot));
    }
    return lines;
}

std::vector<Undecided> undecidedSignatures(const std::vector<Warning>& warnings) {
    std::vector<Undecided> undecided;
    std::set<std::string> known;
    for (const Warning& warning : warnings) {
        const std::string guid = attribute(warning, "guid");
        if (isUnresolved(warning) && !guid.empty() && known.insert(guid).second)
            undecided.push_back({guid, attribute(warning, "because")});
    }
    return undecided;
}

bool hasGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids) {
    return std::any_of(warnings.begin(), warnings.end(),
                       [&](const Warning& warning) { return concerns(warning, guids) && isGap(warning); });
}

bool hasUnexpectedGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids) {
    if (!guids.empty()) return hasGaps(warnings, guids);
    std::map<std::string, std::set<std::string>> reasons;  // codes, by signature
    for (const Warning& warning : warnings) {
        if (isOfDamagedFile(warning)) continue;
        reasons[lowerCase(attribute(warning, "guid"))].insert(attribute(warning, "code"));
    }
    const auto isExpected = [&](const Warning& unresolved) {
        if (!attribute(unresolved, "because").empty()) return isUnresolvedByRights(unresolved);
        const std::set<std::string>& codes = reasons[lowerCase(attribute(unresolved, "guid"))];
        return codes.size() > 1 && std::all_of(codes.begin(), codes.end(), [](const std::string& code) {
                   return code == "unresolved" || code == "permission" || code == "denied";
               });
    };
    return std::any_of(warnings.begin(), warnings.end(), [&](const Warning& warning) {
        return isGap(warning) && !isOfFile(warning) && !(isUnresolved(warning) && isExpected(warning));
    });
}

}  // namespace zavcli
