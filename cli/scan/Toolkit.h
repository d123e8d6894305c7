// Chooses the toolkit directory, which holds the scanners.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/system/PathTrust.h"

namespace zavcli {

// One of the two scanners of a toolkit.
struct Scanner {
    const char* program;
    const char* kind;
    const char* rootVariable;  // the environment variable that names the directory to scan
};

inline constexpr Scanner kHardwareScanner{"quorvah", "hardware", "QUORVAH_ROOT"};
inline constexpr Scanner kSoftwareScanner{"quorvis", "software", "QUORVIS_ROOT"};

enum class ToolkitSource { Given, Configured, Bundled };

struct Toolkit {
    std::string directory;
    ToolkitSource source = ToolkitSource::Bundled;
};

struct ToolkitCandidates {
    std::optional<std::string> given;  // from the command line; excludes the others
    std::string configured;            // from /etc/zav/zav.ini; empty if it names none
    std::vector<std::string> bundled;  // from the installation of this command, in order of preference
};

// The directories that may hold the scanners of the installation to which the command at this path belongs.
std::vector<std::string> bundledDirectories(const std::filesystem::path& command);

// The path of the executable of this process.
std::filesystem::path commandPath();

// Whether the directory holds an executable program of that name.
bool containsProgram(const std::string& directory, const std::string& name);

// Whether the library can start a program in the directory. It splits the path of a scanner at blanks and
// tabs, and removes double quotes.
bool isStartablePath(std::string_view directory);

// The path of the scanner in the toolkit directory.
std::string scannerPath(const std::string& directory, const Scanner& scanner);

// The first candidate that holds the scanner. Throws Failure if there is none or if the scanner cannot be
// started there.
Toolkit chooseToolkit(const ToolkitCandidates& candidates, const Scanner& scanner);

// What lets other users replace the scanner, or the file that names the toolkit.
std::vector<Weakness> findWeaknesses(const Toolkit& toolkit, const Scanner& scanner);

// Throws Failure if this process runs as root and other users could replace the scanner.
void requireTrusted(const Toolkit& toolkit, const Scanner& scanner);

}  // namespace zavcli
