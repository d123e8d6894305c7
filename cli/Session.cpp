#include "cli/Session.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "cli/Reporter.h"
#include "cli/Terminal.h"

namespace zavcli {

Probe probeSetUp(const Options& options, Progress& progress) {
    const Verbosity verbosity = options.verbosity == Verbosity::Trace ? Verbosity::Trace : Verbosity::Errors;
    Reporter reporter(verbosity, ToolkitSource::Bundled, progress);
    return probeLibrary(reporter);
}

Toolkit toolkitFor(const Options& options, const Probe& probe, const Scanner& scanner) {
    // An installed scanner may not know of the directory to scan and would report this machine in its place.
    const std::string configured = options.root ? "" : probe.toolkit;
    return chooseToolkit({options.toolkit, configured, bundledPlaces(thisCommand())}, scanner);
}

std::string setScannedRoot(const Options& options, const Scanner& scanner) {
    if (options.root) setenv(scanner.rootVariable, std::filesystem::canonical(*options.root).c_str(), 1);
    const char* const root = std::getenv(scanner.rootVariable);
    return root == nullptr ? "" : root;
}

TableStyle tableStyle(const Options& options) {
    TableStyle style;
    style.columns = columnsFor(options.output ? -1 : STDOUT_FILENO);
    style.bold = !options.output && isCapableTerminal(STDOUT_FILENO) && std::getenv("NO_COLOR") == nullptr;
    style.overview = options.groups.empty();
    style.everything = options.all;
    return style;
}

Destination::Destination(const Options& options) {
    if (options.output) file_.emplace(*options.output);
}

void Destination::write(const std::string& text) {
    if (file_)
        file_->commit(text);
    else
        writeStandardOutput(text);
}

}  // namespace zavcli
