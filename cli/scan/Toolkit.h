// Which toolkit directory a scan uses.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/Trust.h"

namespace zavcli {

// One of the two scanners of a toolkit.
struct Scanner {
    const char* program;
    const char* kind;
    const char* rootVariable;  // the bundled scanner reads the directory to scan from it
};

inline constexpr Scanner kHardwareScanner{"quorvah", "hardware", "QUORVAH_ROOT"};
inline constexpr Scanner kSoftwareScanner{"quorvis", "software", "QUORVIS_ROOT"};

enum class ToolkitSource { Given, Configured, Bundled };

struct Toolkit {
    std::string directory;
    ToolkitSource source = ToolkitSource::Bundled;
};

// Where a toolkit may be.
struct ToolkitPlaces {
    std::optional<std::string> given;  // on the command line: it or nothing
    std::string configured;            // in /etc/zav/zav.ini; empty for none
    std::vector<std::string> bundled;  // directories that come with this command, the best first
};

// The directories that may hold the scanners that came with the command of this path.
std::vector<std::string> bundledPlaces(const std::filesystem::path& command);

// The path of this command's executable file.
std::filesystem::path thisCommand();

// Whether the directory holds an executable program of that name.
bool holdsProgram(const std::string& directory, const std::string& name);

// Whether the library could start a program in the directory: it splits the scanner's path at blanks and
// tabs, and drops double quotes.
bool canBeStartedFrom(std::string_view directory);

// The scanner's path in the toolkit directory.
std::string scannerPath(const std::string& directory, const Scanner& scanner);

// The first of the places that holds the scanner. Throws Failure when there is none or it cannot be started.
Toolkit chooseToolkit(const ToolkitPlaces& places, const Scanner& scanner);

// What lets other users put something else into the place of the scanner, or of the file that names the toolkit.
std::vector<Weakness> weaknessesOf(const Toolkit& toolkit, const Scanner& scanner);

// Throws Failure when root would start a scanner that has such weaknesses.
void requireTrusted(const Toolkit& toolkit, const Scanner& scanner);

}  // namespace zavcli
