#pragma once

#include <array>
#include <deque>
#include <memory>
#include <vector>

#include "hw/HWGroups.h"
#include "tessa/Arena.h"
#include "tessa/TextStore.h"

namespace zav {

// A field of an instance. Both texts are NUL-terminated.
struct HWField {
    const wchar_t* name;
    const char* value;  // UTF-8
};

// An instance as it is read from the document, in document order; a name may occur more than once.
struct HWInstance {
    std::vector<HWField> fields;
};

// The findings of a scan: the instances of all groups, and the texts in them.
class HWTables {
  public:
    using Names = std::vector<const wchar_t*>;

    // A stored instance. Most instances of a group have the same names, and share them.
    struct Row {
        std::size_t size() const { return names->size(); }

        Names* names;
        const char** values;  // one for each name, in UTF-8
    };

    // Discards everything, and keeps memory for the next findings. Allocates no memory.
    void clear();

    // The owner of the texts of the instances that are added from now on; by default a store of its own.
    void setTexts(std::shared_ptr<tessa::TextStore> texts) { texts_ = std::move(texts); }
    tessa::TextStore& texts();

    // Throws DocumentTooLarge and std::bad_alloc.
    void add(int group, const HWInstance& instance);

    std::size_t count(int group) const { return rowsOf(group).size(); }
    // Null if there is no such instance.
    const Row* find(int group, int instance) const;

    // The names of the fields of an instance as an array; null if it has none.
    static const wchar_t** nameArray(const Row& row) { return row.size() == 0 ? nullptr : row.names->data(); }

  private:
    const std::vector<Row>& rowsOf(int group) const { return rows_.at(static_cast<std::size_t>(group)); }
    Names* namesOf(const std::vector<Row>& neighbours, const HWInstance& instance);

    std::array<std::vector<Row>, kGroupSlots> rows_;  // by group id
    std::shared_ptr<tessa::TextStore> texts_;
    std::deque<Names> names_;
    tessa::MemoryBudget budget_;
    tessa::Arena values_{budget_};
};

}  // namespace zav
