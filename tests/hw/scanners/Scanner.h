// What the scanners of the tests share. Each is started under the name quorvah, as the library starts the
// toolkit's own: quorvah -c "configuration" -o "output". What a test wants of it stands in files beside it.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace scanner {

inline std::string beside(char** arguments, const char* name) {
    const auto directory = std::filesystem::path(arguments[0]).parent_path();
    const std::ifstream file(directory / name, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

inline void writeOutput(char** arguments, const std::string& content) {
    std::ofstream(arguments[4], std::ios::binary) << content;
}

}  // namespace scanner
