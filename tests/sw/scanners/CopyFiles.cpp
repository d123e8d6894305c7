// Replaces the toolkit's scanner: quorvis -c "configuration" -o "output" -e "warnings" -i "signatures". Copies its
// input files to seen_configuration and seen_signatures beside it, prints the content of lines, writes the content of
// output.xml and warnings.xml, and ends with the number in signal or status. Each of these files may be missing.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

void keep(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code ignored;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, ignored);
}

int numberIn(const std::filesystem::path& file) {
    int number = 0;
    std::ifstream(file) >> number;
    return number;
}

}  // namespace

int main(int, char** arguments) {
    const auto directory = std::filesystem::path(arguments[0]).parent_path();
    keep(arguments[2], directory / "seen_configuration");
    keep(arguments[8], directory / "seen_signatures");
    const std::ifstream lines(directory / "lines", std::ios::binary);
    if (lines.is_open()) std::cout << lines.rdbuf() << std::flush;
    keep(directory / "output.xml", arguments[4]);
    keep(directory / "warnings.xml", arguments[6]);
    const int signal = numberIn(directory / "signal");
    if (signal != 0) std::raise(signal);
    return numberIn(directory / "status");
}
