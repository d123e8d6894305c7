#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tessa {

// The entities that a document declares, so that those which are left out can be told by name: external ones, and
// those that would be declared in a part that is not loaded.
class EntityTable {
  public:
    // `tell` gets each name that is left out, for a message, once, and why; not more than there may be entities.
    explicit EntityTable(std::function<void(const std::string&)> tell) : tell_(std::move(tell)) {}

    // Expat expands an entity that names another by recursion, so a long chain of them would exhaust the stack: false
    // when there are more than a document may have.
    bool declare(std::string_view name, bool isParameter, std::string_view value);
    bool declareExternal(std::string_view name, bool isParameter, std::string_view systemId);

    void leaveOutUndeclared(std::string_view name, bool isParameter);
    // Expat tells of an external entity by the names of all that are open, between form feeds.
    void leaveOutExternal(std::string_view openNames);
    // ... and of a parameter entity by where it lies only.
    void leaveOutExternalParameter(std::string_view systemId);

    // Expat says nothing of references in attributes: `text` is the element's tag in UTF-8, or the literal of a
    // default value.
    void leaveOutReferences(std::string_view text);

  private:
    struct Entity {
        std::string name;
        bool isParameter;
        bool isExternal;
        std::string content;  // or where an external one lies
        bool searched = false;
    };

    bool add(Entity entity);
    Entity* find(std::string_view name);
    void search(std::string_view text, std::vector<Entity*>& waiting);
    void leaveOut(std::string_view name, bool isParameter, const char* reason);

    std::function<void(const std::string&)> tell_;
    std::vector<Entity> entities_;
    std::set<std::string> told_;
};

}  // namespace tessa
