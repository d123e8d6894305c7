#include <algorithm>

#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

// The entity with the regid and the role that the query has; the creator of the tag when the query has neither. Null when
// there is none.
const SwidEntity* entityOf(const Query& query, const SwidTag& tag) {
    const bool asked = query.has(Attribute::Regid) || query.has(Attribute::Role);
    const auto fits = [&](const SwidEntity& entity) {
        if (!asked) return entity.hasRole("tagCreator");
        return isOrAny(query, Attribute::Regid, entity.regid) &&
               (!query.has(Attribute::Role) || entity.hasRole(query.get(Attribute::Role)));
    };
    const auto found = std::ranges::find_if(tag.entities, fits);
    return found == tag.entities.end() ? nullptr : &*found;
}

bool passes(const Query& query, const SwidTag& tag, const SwidEntity* entity) {
    const bool entityAsked = query.has(Attribute::Regid) || query.has(Attribute::Role);
    return isOrAny(query, Attribute::TagId, tag.tagId) && isOrAny(query, Attribute::Name, tag.name) &&
           isOrAny(query, Attribute::Patch, tag.patch ? "true" : "false") &&
           isOrAny(query, Attribute::Corpus, tag.corpus ? "true" : "false") &&
           (!entityAsked || entity != nullptr);
}

Item itemOf(const SwidTag& tag, const SwidEntity* entity) {
    Item item;
    item.source = tag.path;
    const auto set = [&item](std::string_view name, std::string_view value) {
        if (!value.empty()) item.set(name, std::string(value.substr(0, kMaxValueSize)));
    };
    set("tagId", tag.tagId);
    set("name", tag.name);
    set("version", tag.version);
    if (entity != nullptr) set("regid", entity->regid);
    set("path", tag.path);
    set("tagVersion", tag.tagVersion);
    return item;
}

}  // namespace

LeafResult lookUpSwidTag(const Query& query, EvaluationContext& context) {
    LeafResult result;
    for (const SwidTag& tag : context.swidTags().tags()) {
        context.budget().checkTimeOccasionally();
        const SwidEntity* const entity = entityOf(query, tag);
        if (!passes(query, tag, entity)) continue;
        // A tag without a version does not pass a version test.
        if (hasVersionTest(query) && tag.version.empty()) continue;
        if (!passesVersionTests(query, Scheme::Dotted, tag.version, tag.path, result)) continue;
        keepItem(context.budget(), result, itemOf(tag, entity));
    }
    const std::vector<Event>& events = context.swidTags().events();
    result.events.insert(result.events.end(), events.begin(), events.end());
    result.incomplete = result.incomplete || context.swidTags().incomplete();
    return result;
}

}  // namespace toolkit::quorvis
