#include "toolkit/quorvis/leaves/ReadingLeaf.h"

#include <re2/re2.h>

#include "toolkit/quorvis/leaves/Machine.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

std::shared_ptr<const std::string> contentOf(const std::string& path, Machine& machine, LeafResult& result) {
    Files::Content content = machine.files().read(path, machine.settings().fileSystem.maxContentSize);
    result.incomplete = content.access == Access::Failed;
    if (content.event) result.events.push_back(std::move(*content.event));
    return content.access == Access::Ok ? std::move(content.bytes) : nullptr;
}

const re2::RE2* regexOf(const Query& query, LeafResult& result) {
    std::string problem;
    const RE2* const regex = compileRegex(query.get(Attribute::Regex), query.get(Attribute::Flags), problem);
    if (regex == nullptr) result.fail(EventCode::Unsupported, {}, "wrong expression: " + problem);
    return regex;
}

bool isOrAny(const Query& query, Attribute attribute, std::string_view text) {
    return !query.has(attribute) || query.get(attribute) == text;
}

bool passesVersion(const Query& query, Scheme usual, std::string_view version, const std::string& path,
                   LeafResult& result) {
    if (!hasVersionTest(query)) return true;
    const Truth truth = passesVersionTests(query, usual, version);
    if (truth == Truth::Unknown) {
        result.fail(EventCode::Unsupported, path,
                    "cannot compare the version \"" + std::string(version.substr(0, 64)) + "\"");
    }
    return truth == Truth::True;
}

bool passesTests(const Query& query, std::string_view value, const std::string& path, LeafResult& result) {
    if (query.has(Attribute::Regex)) {
        const RE2* const regex = regexOf(query, result);
        if (regex == nullptr || !RE2::PartialMatch({value.data(), value.size()}, *regex)) return false;
    }
    return passesVersion(query, Scheme::Dotted, value, path, result);
}

}  // namespace toolkit::quorvis
