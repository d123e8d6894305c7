// Support for the scanners of the tests. Each is started under the name quorvah, as the library starts the toolkit's
// scanner: quorvah -c "configuration" -o "output". Files beside the program control its behaviour.
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
