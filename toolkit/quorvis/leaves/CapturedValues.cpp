#include <re2/re2.h>

#include <utility>

#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

namespace {

// False when the item has no such value or it does not match.
bool captureValue(const Capture& capture, const re2::RE2& regex, EvaluationContext& context, Item& item) {
    const std::string* const value = item.find(capture.of);
    if (value == nullptr) return false;
    RegexMatches match(regex, *value, capture.group);
    if (!match.next()) return false;
    if (!match.has(capture.group)) return true;
    std::string text = match.value(capture.group);
    context.budget().chargeKept(text.size());
    item.set(capture.name, std::move(text));
    return true;
}

}  // namespace

void captureValues(const Query& query, EvaluationContext& context, LeafResult& result) {
    for (const Capture& capture : query.captures()) {
        if (capture.of.empty()) continue;
        std::string problem;
        const RE2* const regex = compileRegex(capture.regex, {}, problem);
        if (regex == nullptr) {
            result.fail(EventCode::Unsupported, {}, "wrong expression: " + problem);
            result.items.clear();
            return;
        }
        std::erase_if(result.items, [&](Item& item) {
            context.budget().checkTimeOccasionally();
            return !captureValue(capture, *regex, context, item);
        });
    }
    if (query.kind() != LeafKind::Process) return;
    for (Item& item : result.items)
        std::erase_if(item.fields, [](const Field& field) { return field.name == kArguments; });
}

}  // namespace toolkit::quorvis
