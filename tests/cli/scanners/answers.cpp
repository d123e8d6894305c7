// A signature scanner for which every signature matches, unless ZAVTEST_OUTPUT names a file of other results. Its warnings
// are the file ZAVTEST_WARNINGS. An element <Bad/> makes the signatures invalid. The input of each run is saved in the
// directory ZAVTEST_GIVEN, with the runs numbered from 1.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "tests/cli/scanners/Arguments.h"

namespace {

std::string contentOf(const char* path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

// The number of the line with the invalid element; 0 if there is none.
int invalidLine(const std::string& signatures) {
    std::istringstream lines(signatures);
    int number = 1;
    for (std::string line; std::getline(lines, line); ++number) {
        if (line.find("<Bad/>") != std::string::npos) return number;
    }
    return 0;
}

std::string matchOfEach(const std::string& signatures) {
    const std::string lead = "<Signature guid=\"";
    std::string xml = "<MatchedSignatures>";
    for (std::size_t at = signatures.find(lead); at != std::string::npos; at = signatures.find(lead, at)) {
        at += lead.size();
        xml += "<MatchedSignature guid=\"" + signatures.substr(at, signatures.find('"', at) - at) + "\"/>";
    }
    return xml + "</MatchedSignatures>";
}

void keep(const char* given, const char* configuration, const std::string& signatures) {
    int run = 1;
    const std::filesystem::path directory(given);
    while (std::filesystem::exists(directory / ("signatures" + std::to_string(run)))) ++run;
    std::ofstream(directory / ("signatures" + std::to_string(run)), std::ios::binary) << signatures;
    std::ofstream(directory / ("configuration" + std::to_string(run)), std::ios::binary)
        << contentOf(configuration);
    const char* const root = std::getenv("QUORVIS_ROOT");
    std::ofstream(directory / ("root" + std::to_string(run))) << (root == nullptr ? "none" : root);
}

bool checks(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--check") == 0) return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const char* const input = scanner::argument(argc, argv, "-i");
    if (input == nullptr) return 2;
    const std::string signatures = contentOf(input);
    const bool check = checks(argc, argv);
    if (const int line = invalidLine(signatures)) {
        if (!check) std::cout << "error: invalid: ";
        std::cout << input << ':' << line << ":1: unknown element Bad" << std::endl;
        return 3;
    }
    if (check) {
        std::cout << input << ": valid" << std::endl;
        return 0;
    }
    const char* const configuration = scanner::argument(argc, argv, "-c");
    const char* const output = scanner::argument(argc, argv, "-o");
    const char* const warnings = scanner::argument(argc, argv, "-e");
    if (configuration == nullptr || output == nullptr || warnings == nullptr) return 2;
    if (const char* const given = std::getenv("ZAVTEST_GIVEN")) keep(given, configuration, signatures);
    if (const char* const guid = scanner::argument(argc, argv, "--explain"))
        std::cout << "explained " << guid << std::endl;
    const char* const prepared = std::getenv("ZAVTEST_OUTPUT");
    const char* const events = std::getenv("ZAVTEST_WARNINGS");
    std::ofstream(output, std::ios::binary)
        << (prepared == nullptr ? matchOfEach(signatures) : contentOf(prepared));
    std::ofstream(warnings, std::ios::binary) << (events == nullptr ? "<Events/>" : contentOf(events));
    return 0;
}
