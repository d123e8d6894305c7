// The catalogue of the conformance suite.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tessa::conformance {

struct Case {
    std::string id;
    std::string type;      // valid, invalid, not-wf or error
    std::string entities;  // external entities that it needs: none, general, parameter or both
    std::string version;
    std::string editions;  // separated by blanks; empty for all
    bool namespaces;       // whether it tests namespaces
    std::filesystem::path path;
    std::filesystem::path output;  // its canonical form; empty if there is none
};

std::vector<Case> casesOf(const std::filesystem::path& suite);

}  // namespace tessa::conformance
