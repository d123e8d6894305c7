#include "cli/scan/Toolkit.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>

#include "cli/scan/Configuration.h"
#include "cli/system/Failure.h"

namespace zavcli {

namespace {

void requireStartable(const std::string& directory, int status) {
    if (canBeStartedFrom(directory)) return;
    throw Failure(status,
                  fmt::format("the toolkit directory '{}' cannot be used: the library cannot start a scanner "
                              "from a path with blanks, tabs or double quotes; move or link it elsewhere",
                              directory));
}

Toolkit givenToolkit(const std::string& directory, const Scanner& scanner) {
    std::error_code error;
    if (!std::filesystem::is_directory(directory, error))
        throw Failure(kExitBadUsage, fmt::format("--toolkit: '{}' is not a directory", directory));
    requireStartable(directory, kExitBadUsage);
    if (!holdsProgram(directory, scanner.program))
        throw Failure(kExitBadUsage,
                      fmt::format("--toolkit: '{}' holds no program '{}'", directory, scanner.program));
    return {directory, ToolkitSource::Given};
}

}  // namespace

std::vector<std::string> bundledPlaces(const std::filesystem::path& command) {
    const std::filesystem::path directory = command.parent_path();
    return {directory.string(), (directory / ".." / "libexec" / "zav").lexically_normal().string()};
}

std::filesystem::path thisCommand() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

bool holdsProgram(const std::string& directory, const std::string& name) {
    const std::string path = directory + "/" + name;
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
}

bool canBeStartedFrom(std::string_view directory) {
    return directory.find_first_of(" \t\"") == std::string_view::npos;
}

std::string scannerPath(const std::string& directory, const Scanner& scanner) {
    return directory + "/" + scanner.program;
}

std::vector<Weakness> weaknessesOf(const Toolkit& toolkit, const Scanner& scanner) {
    const std::vector<uid_t> trusted = trustedUsers(thisCommand().string());
    std::vector<Weakness> weaknesses = weaknessesOf(toolkit.directory, Leads::ToDirectory, trusted);
    addOthers(weaknesses, weaknessesOf(scannerPath(toolkit.directory, scanner), Leads::ToFile, trusted));
    if (toolkit.source == ToolkitSource::Configured)
        addOthers(weaknesses, weaknessesOf(kConfigurationFile, Leads::ToFile, trusted));
    return weaknesses;
}

void requireTrusted(const Toolkit& toolkit, const Scanner& scanner) {
    if (geteuid() != 0) return;
    const std::vector<Weakness> weaknesses = weaknessesOf(toolkit, scanner);
    if (weaknesses.empty()) return;
    throw Failure(kExitFailed,
                  fmt::format("root does not start {}, since another user could put something else into "
                              "its place: {}",
                              scannerPath(toolkit.directory, scanner), describe(weaknesses)));
}

Toolkit chooseToolkit(const ToolkitPlaces& places, const Scanner& scanner) {
    if (places.given) return givenToolkit(*places.given, scanner);
    std::vector<Toolkit> candidates;
    std::vector<std::string> looked = places.bundled;
    if (!places.configured.empty()) {
        candidates.push_back({places.configured, ToolkitSource::Configured});
        looked.insert(looked.begin(), places.configured);
    }
    for (const std::string& directory : places.bundled)
        candidates.push_back({directory, ToolkitSource::Bundled});

    std::erase_if(candidates,
                  [&](const Toolkit& toolkit) { return !holdsProgram(toolkit.directory, scanner.program); });
    if (!candidates.empty()) {
        requireStartable(candidates.front().directory, kExitFailed);
        return candidates.front();
    }
    throw Failure(kExitFailed, fmt::format("no {} scanner '{}' in {}; --toolkit names its directory",
                                           scanner.kind, scanner.program, fmt::join(looked, " or ")));
}

}  // namespace zavcli
