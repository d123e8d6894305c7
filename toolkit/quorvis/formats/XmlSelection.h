#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/ParseLimits.h"

namespace toolkit::quorvis {

// A way from the root element of a document to elements or to an attribute of theirs:
// "/project/dependency[2]/@scope".
struct XmlSelection {
    struct Step {
        std::string name;
        std::size_t number = 0;  // which of several with this name, from 1; 0 for all
    };
    std::vector<Step> steps;
    std::string attribute;  // empty when the elements' own text is selected

    // None, with `problem` told in words, when it is not written like that.
    static std::optional<XmlSelection> parse(std::string_view text, std::string& problem);
};

struct SelectedValues {
    std::vector<std::string> values;  // in document order, without white space around them
    bool tooMany = false;             // there are more than were asked for
    std::optional<std::string> problem;
};
SelectedValues selectValues(std::string_view document, const XmlSelection& selection, std::size_t limit,
                            const Tick& tick = {});

}  // namespace toolkit::quorvis
