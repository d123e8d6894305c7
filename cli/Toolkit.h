// Which toolkit directory a scan uses.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

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

// The first of the places that holds a hardware scanner. Throws Failure when there is none or it cannot be
// started.
Toolkit chooseToolkit(const ToolkitPlaces& places);

}  // namespace zavcli
