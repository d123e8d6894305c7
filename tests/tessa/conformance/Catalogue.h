// The catalogue of the conformance suite.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tessa::conformance {

struct Case {
    std::string id;
    std::string type;      // valid, invalid, not-wf or error
    std::string entities;  // external ones that it needs: none, general, parameter or both
    std::string version;
    std::string editions;  // separated by blanks; empty for all
    bool namespaces;       // whether it is about those
    std::filesystem::path path;
    std::filesystem::path output;  // its canonical form, empty when there is none
};

std::vector<Case> casesOf(const std::filesystem::path& suite);

}  // namespace tessa::conformance
