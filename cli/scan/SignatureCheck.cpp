#include "cli/scan/SignatureCheck.h"

#include <fmt/format.h>

#include <sstream>

#include "cli/system/Failure.h"
#include "cli/system/Program.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

constexpr int kValid = 0;
constexpr int kInvalid = 3;

// The scanner's lines, each made safe for a terminal and naming the file.
std::string linesOf(const std::string& said, const std::string& path) {
    std::string text;
    std::istringstream lines(said);
    for (std::string line; std::getline(lines, line);) {
        const bool named = line.find(path) != std::string::npos;
        text += printable(named ? line : fmt::format("{}: {}", path, line)) + "\n";
    }
    return text;
}

}  // namespace

CheckedSignatures checkSignatures(const std::string& scanner, const std::vector<std::string>& paths) {
    CheckedSignatures checked;
    for (const std::string& path : paths) {
        const ProgramEnd end = runProgram(scanner, {"--check", "-i", path});
        if (end.status != kValid && end.status != kInvalid)
            throw Failure(kExitFailed,
                          fmt::format("the scanner {} cannot check signatures: it ended with status {}",
                                      scanner, end.status));
        checked.valid = checked.valid && end.status == kValid;
        std::string lines = linesOf(end.out, path);
        if (lines.empty())
            lines = fmt::format("{}: {}\n", printable(path), end.status == kValid ? "valid" : "not valid");
        checked.text += lines;
    }
    return checked;
}

}  // namespace zavcli
