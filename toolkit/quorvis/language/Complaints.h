#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/quorvis/language/Element.h"

namespace toolkit::quorvis {

// What is wrong with an element of a signature.
struct Complaint {
    std::uint32_t line = 0;
    std::uint32_t offset = 0;
    std::string text;
};

struct Complaints {
    std::vector<Complaint> problems;  // make the signature invalid
    std::vector<Complaint> warnings;

    void problem(const Element& at, std::string text) {
        problems.push_back({at.line, at.offset, std::move(text)});
    }
    void warning(const Element& at, std::string text) {
        warnings.push_back({at.line, at.offset, std::move(text)});
    }
};

}  // namespace toolkit::quorvis
