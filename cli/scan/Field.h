// A name with a value, both in UTF-8: what the inventories of hardware and software consist of.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

struct Field {
    std::string name;
    std::string value;
};

// The first field of that name; null if there is none.
inline const Field* findField(const std::vector<Field>& fields, std::string_view name) {
    const auto found =
        std::find_if(fields.begin(), fields.end(), [name](const Field& field) { return field.name == name; });
    return found == fields.end() ? nullptr : &*found;
}

// The value of the first field of that name; empty if there is none.
inline std::string valueOf(const std::vector<Field>& fields, std::string_view name) {
    const Field* const field = findField(fields, name);
    return field == nullptr ? "" : field->value;
}

}  // namespace zavcli
