// Small pieces of XML that the library hands out as text, as trees.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Model.h"

namespace zavcli {

struct Element {
    std::string name;
    std::vector<Field> attributes;
    std::string text;  // its own, without white space around it
    std::vector<Element> children;

    // The attribute's value; empty when there is none.
    std::string attribute(std::string_view wanted) const;
};

// Nothing for a text that is not well-formed or nested more than 100 deep.
std::optional<Element> readElement(std::string_view xml);

}  // namespace zavcli
