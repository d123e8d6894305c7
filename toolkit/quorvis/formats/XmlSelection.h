#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {

// A path from the root element of a document to elements, or to an attribute of elements: "/project/dependency[2]/@scope".
struct XmlSelection {
    struct Step {
        std::string name;
        std::size_t number = 0;  // position among the siblings with this name, from 1; 0 for all
    };
    std::vector<Step> steps;
    std::string attribute;  // empty if the text of the elements is selected

    // None, with `problem` set, if the syntax is wrong.
    static std::optional<XmlSelection> parse(std::string_view text, std::string& problem);
};

struct SelectedValues {
    std::vector<std::string> values;  // in document order, without surrounding white space
    bool tooMany = false;             // there are more than `limit` values
    std::optional<std::string> problem;
};
SelectedValues selectValues(std::string_view document, const XmlSelection& selection, std::size_t limit,
                            const ProgressCheck& checkProgress = {});

}  // namespace toolkit::quorvis
