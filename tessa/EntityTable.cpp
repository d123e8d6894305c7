#include "tessa/EntityTable.h"

#include <algorithm>
#include <iterator>

#include "kest/Escape.h"

namespace tessa {

namespace {

constexpr std::size_t kMaxEntities = 64;

constexpr const char* kExternal = "it is external, and nothing external is loaded";
constexpr const char* kUndeclared = "it is not declared in the document itself";

bool isPredefined(std::string_view name) {
    static constexpr std::string_view names[] = {"lt", "gt", "amp", "apos", "quot"};
    return name.starts_with('#') || std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

bool EntityTable::declare(std::string_view name, bool isParameter, std::string_view value) {
    return add({std::string(name), isParameter, false, std::string(value)});
}

bool EntityTable::declareExternal(std::string_view name, bool isParameter, std::string_view systemId) {
    return add({std::string(name), isParameter, true, std::string(systemId)});
}

bool EntityTable::add(Entity entity) {
    entities_.push_back(std::move(entity));
    return entities_.size() <= kMaxEntities;
}

void EntityTable::leaveOutUndeclared(std::string_view name, bool isParameter) {
    leaveOut(name, isParameter, kUndeclared);
}

void EntityTable::leaveOutExternal(std::string_view openNames) {
    for (std::size_t begin = 0; begin <= openNames.size();) {
        const std::size_t end = std::min(openNames.find('\f', begin), openNames.size());
        const std::string_view name = openNames.substr(begin, end - begin);
        const Entity* const entity = find(name);
        if (entity != nullptr && entity->isExternal) leaveOut(name, false, kExternal);
        begin = end + 1;
    }
}

void EntityTable::leaveOutExternalParameter(std::string_view systemId) {
    for (const Entity& each : entities_) {
        if (each.isParameter && each.isExternal && each.content == systemId)
            leaveOut(each.name, true, kExternal);
    }
}

// Searches the content of each entity at most once.
void EntityTable::leaveOutReferences(std::string_view text) {
    std::vector<Entity*> waiting;
    search(text, waiting);
    while (!waiting.empty()) {
        const Entity* const entity = waiting.back();
        waiting.pop_back();
        search(entity->content, waiting);
    }
}

void EntityTable::search(std::string_view text, std::vector<Entity*>& waiting) {
    for (std::size_t begin = text.find('&'); begin != std::string_view::npos; begin = text.find('&', begin)) {
        const std::size_t end = text.find(';', ++begin);
        if (end == std::string_view::npos) return;
        const std::string_view name = text.substr(begin, end - begin);
        begin = end;
        if (isPredefined(name)) continue;
        Entity* const entity = find(name);
        if (entity == nullptr) {
            leaveOut(name, false, kUndeclared);
        } else if (!entity->isExternal && !entity->searched) {
            entity->searched = true;
            waiting.push_back(entity);
        }
    }
}

EntityTable::Entity* EntityTable::find(std::string_view name) {
    const auto found = std::find_if(entities_.begin(), entities_.end(), [name](const Entity& each) {
        return !each.isParameter && each.name == name;
    });
    return found == entities_.end() ? nullptr : &*found;
}

void EntityTable::leaveOut(std::string_view name, bool isParameter, const char* reason) {
    if (reported_.size() > kMaxEntities) return;
    const std::string shownName = (isParameter ? "parameter entity " : "entity ") + kest::quoted(name);
    if (!reported_.insert(shownName).second) return;
    if (reported_.size() > kMaxEntities) {
        warn_("more entities are left out");
    } else {
        warn_(shownName + " is left out: " + reason);
    }
}

}  // namespace tessa
