#include "cli/scan/Toolkit.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include "cli/scan/LocationFile.h"
#include "cli/system/Failure.h"

namespace zavcli {

namespace {

void requireStartable(const std::string& directory, int status) {
    if (isStartablePath(directory)) return;
    throw Failure(status,
                  fmt::format("the toolkit directory '{}' cannot be used: the library cannot start a scanner "
                              "from a path with blanks, tabs or double quotes; move it or link to it",
                              directory));
}

Toolkit givenToolkit(const std::string& directory, const Scanner& scanner) {
    std::error_code error;
    if (!std::filesystem::is_directory(directory, error))
        throw Failure(kExitBadUsage, fmt::format("--toolkit: '{}' is not a directory", directory));
    requireStartable(directory, kExitBadUsage);
    if (!containsProgram(directory, scanner.program))
        throw Failure(kExitBadUsage,
                      fmt::format("--toolkit: '{}' contains no program '{}'", directory, scanner.program));
    return {directory, ToolkitSource::Given};
}

}  // namespace

std::vector<std::string> bundledDirectories(const std::filesystem::path& command) {
    const std::filesystem::path directory = command.parent_path();
    return {directory.string(), (directory / ".." / "libexec" / "zav" / "bin").lexically_normal().string()};
}

std::filesystem::path commandPath() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

bool containsProgram(const std::string& directory, const std::string& name) {
    const std::string path = directory + "/" + name;
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
}

bool isStartablePath(std::string_view directory) {
    return directory.find_first_of(" \t\"") == std::string_view::npos;
}

std::string scannerPath(const std::string& directory, const Scanner& scanner) {
    return directory + "/" + scanner.program;
}

std::vector<Weakness> findWeaknesses(const Toolkit& toolkit, const Scanner& scanner) {
    const std::vector<uid_t> trusted = trustedUsers(commandPath().string());
    std::vector<Weakness> weaknesses = findWeaknesses(toolkit.directory, PathKind::Directory, trusted);
    mergeWeaknesses(weaknesses,
                    findWeaknesses(scannerPath(toolkit.directory, scanner), PathKind::File, trusted));
    if (toolkit.source == ToolkitSource::Configured)
        mergeWeaknesses(weaknesses, findWeaknesses(kLocationFile, PathKind::File, trusted));
    return weaknesses;
}

void requireTrusted(const Toolkit& toolkit, const Scanner& scanner) {
    if (geteuid() != 0) return;
    const std::vector<Weakness> weaknesses = findWeaknesses(toolkit, scanner);
    if (weaknesses.empty()) return;
    throw Failure(kExitFailed,
                  fmt::format("root does not start {}, because another user could replace it: {}",
                              scannerPath(toolkit.directory, scanner), describe(weaknesses)));
}

Toolkit chooseToolkit(const ToolkitCandidates& candidates, const Scanner& scanner) {
    if (candidates.given) return givenToolkit(*candidates.given, scanner);
    std::vector<Toolkit> toolkits;
    if (!candidates.configured.empty())
        toolkits.push_back({candidates.configured, ToolkitSource::Configured});
    for (const std::string& directory : candidates.bundled)
        toolkits.push_back({directory, ToolkitSource::Bundled});
    std::vector<std::string> searched;
    for (const Toolkit& toolkit : toolkits) {
        if (containsProgram(toolkit.directory, scanner.program)) {
            requireStartable(toolkit.directory, kExitFailed);
            return toolkit;
        }
        searched.push_back(toolkit.directory);
    }
    throw Failure(kExitFailed, fmt::format("no {} scanner '{}' in {}; use --toolkit to name its directory",
                                           scanner.kind, scanner.program, fmt::join(searched, " or ")));
}

}  // namespace zavcli
