#include "cli/commands/Session.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "cli/scan/Configuration.h"
#include "cli/scan/Library.h"
#include "cli/scan/Location.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

Toolkit toolkitFor(const Options& options, const Scanner& scanner) {
    // An installed scanner may not know of the directory to scan and would report this machine in its place.
    const std::string configured = options.root ? "" : readLocation(kConfigurationFile, kProductName).toolkit;
    Toolkit toolkit = chooseToolkit({options.toolkit, configured, bundledPlaces(thisCommand())}, scanner);
    requireTrusted(toolkit, scanner);
    if (toolkit.source == ToolkitSource::Bundled && !configured.empty())
        complain(fmt::format("{} names {}, which holds no program '{}'; that of {} is used",
                             kConfigurationFile, configured, scanner.program, toolkit.directory));
    return toolkit;
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
