// XML that no scanner should write.
#pragma once

#include <string>

namespace zavtest {

inline std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i) all += text;
    return all;
}

// A document type declaration whose entity e11 expands to 10^11 copies of a text.
inline std::string amplifyingDoctype() {
    std::string doctype = "<!DOCTYPE QEL [<!ENTITY e0 \"lololololololololol\">";
    for (int level = 1; level < 12; ++level) {
        const std::string inner = "&e" + std::to_string(level - 1) + ";";
        doctype += "<!ENTITY e" + std::to_string(level) + " \"" + repeated(inner, 10) + "\">";
    }
    return doctype + "]>";
}

}  // namespace zavtest
