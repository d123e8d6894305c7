#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tessa {

// The entities that a document declares. Reports by name those that are left out: external entities, and entities whose
// declaration would be in a part that is not loaded.
class EntityTable {
  public:
    // `warn` receives one message for each entity that is left out, up to the maximum number of entities.
    explicit EntityTable(std::function<void(const std::string&)> warn) : warn_(std::move(warn)) {}

    // Both return false if there are too many entities. Expat expands nested entities recursively, so a long chain of
    // them would exhaust the stack.
    bool declare(std::string_view name, bool isParameter, std::string_view value);
    bool declareExternal(std::string_view name, bool isParameter, std::string_view systemId);

    void leaveOutUndeclared(std::string_view name, bool isParameter);
    // Expat identifies an external entity by the names of all open entities, separated by form feeds.
    void leaveOutExternal(std::string_view openNames);
    // Expat identifies an external parameter entity only by its system identifier.
    void leaveOutExternalParameter(std::string_view systemId);

    // Finds references in attributes, which Expat does not report. `text` is a tag or the literal of a default value, in
    // UTF-8.
    void leaveOutReferences(std::string_view text);

  private:
    struct Entity {
        std::string name;
        bool isParameter;
        bool isExternal;
        std::string content;  // the system identifier if external
        bool searched = false;
    };

    bool add(Entity entity);
    Entity* find(std::string_view name);
    void search(std::string_view text, std::vector<Entity*>& waiting);
    void leaveOut(std::string_view name, bool isParameter, const char* reason);

    std::function<void(const std::string&)> warn_;
    std::vector<Entity> entities_;
    std::set<std::string> reported_;
};

}  // namespace tessa
