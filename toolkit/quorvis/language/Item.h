#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toolkit::quorvis {

// One value of an item. The name is a literal or a text of the signature.
struct Field {
    std::string_view name;
    std::string value;
};

// One thing that a leaf found: a package, a file, a match. "${id.field}" stands for one of its values.
struct Item {
    std::vector<Field> fields;
    std::string source;  // the file that proves it: a package database, the path of a found file

    void set(std::string_view name, std::string value) { fields.push_back({name, std::move(value)}); }
    // Null when the item has no such value.
    const std::string* find(std::string_view name) const {
        for (const Field& field : fields) {
            if (field.name == name) return &field.value;
        }
        return nullptr;
    }
};

}  // namespace toolkit::quorvis
