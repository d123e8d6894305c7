// The command zav: a host of the library like any other.
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <variant>

#include "cli/CsvWriter.h"
#include "cli/Doctor.h"
#include "cli/Failure.h"
#include "cli/GroupWriter.h"
#include "cli/Interrupt.h"
#include "cli/Inventory.h"
#include "cli/JsonWriter.h"
#include "cli/Options.h"
#include "cli/Output.h"
#include "cli/Probe.h"
#include "cli/Progress.h"
#include "cli/Reporter.h"
#include "cli/TableWriter.h"
#include "cli/Terminal.h"
#include "cli/Text.h"
#include "cli/Toolkit.h"
#include "cli/XmlWriter.h"

namespace zavcli {

namespace {

// The bundled scanner reads the scanned directory from this variable.
constexpr const char* kRootVariable = "QUORVAH_ROOT";

// Hears the messages of the first opening, which only finds out the set-up: shown in a full trace only.
Verbosity probeVerbosity(Verbosity verbosity) {
    return verbosity == Verbosity::Trace ? Verbosity::Trace : Verbosity::Errors;
}

std::string scannedRoot(const Options& options) {
    if (options.root) setenv(kRootVariable, std::filesystem::canonical(*options.root).c_str(), 1);
    const char* root = std::getenv(kRootVariable);
    return root == nullptr ? "" : root;
}

std::string written(const Inventory& inventory, const Options& options) {
    switch (options.format) {
        case Format::Json:
            return jsonText(inventory);
        case Format::Csv:
            return csvText(inventory);
        case Format::Xml:
            return xmlText(inventory);
        case Format::Table:
            break;
    }
    TableStyle style;
    style.columns = columnsFor(options.output ? -1 : STDOUT_FILENO);
    style.bold = !options.output && isCapableTerminal(STDOUT_FILENO) && std::getenv("NO_COLOR") == nullptr;
    style.overview = options.groups.empty();
    style.everything = options.all;
    return tableText(inventory, style);
}

Inventory scan(const Library& library, const Toolkit& toolkit, const std::string& root,
               const std::vector<GroupName>& groups, Progress& progress) {
    const InterruptGuard guard;
    progress.begin(static_cast<int>(groups.size()));
    Inventory inventory = takeInventory(library, toolkit.directory, root, groups);
    progress.end();
    return inventory;
}

int hardware(const Options& options) {
    Progress progress(isCapableTerminal(STDERR_FILENO));
    Reporter probeReporter(probeVerbosity(options.verbosity), ToolkitSource::Bundled, progress);
    const Probe probe = probeLibrary(probeReporter);
    const std::vector<GroupName> groups = chooseGroups(probe.groups, options.groups);
    // An installed scanner may not know of the directory to scan and would report this machine in its place.
    const std::string configured = options.root ? "" : probe.toolkit;
    const Toolkit toolkit = chooseToolkit({options.toolkit, configured, bundledPlaces(thisCommand())});
    const std::string root = scannedRoot(options);
    std::optional<OutputFile> file;
    if (options.output) file.emplace(*options.output);

    Reporter reporter(options.verbosity, toolkit.source, progress);
    const Library library(reporter, toolkit.directory);
    const std::string text = written(scan(library, toolkit, root, groups, progress), options);
    if (file)
        file->commit(text);
    else
        writeStandardOutput(text);
    return EXIT_SUCCESS;
}

int listGroups(const Options& options) {
    Progress progress(false);
    Reporter reporter(Verbosity::Errors, ToolkitSource::Bundled, progress);
    const std::vector<GroupName> groups = probeLibrary(reporter).groups;
    switch (options.format) {
        case Format::Json:
            writeStandardOutput(groupJson(groups));
            break;
        case Format::Csv:
            writeStandardOutput(groupCsv(groups));
            break;
        default:
            writeStandardOutput(groupTable(groups));
    }
    return EXIT_SUCCESS;
}

int doctor(const Options& options) {
    const std::vector<Check> checks = examine(options.toolkit);
    writeStandardOutput(checkLines(checks));
    return inventoryCanWork(checks) ? EXIT_SUCCESS : kExitFailed;
}

int run(int argc, const char* const* argv) {
    const auto parsed = parseOptions(argc, argv);
    if (const auto* help = std::get_if<HelpText>(&parsed)) {
        writeStandardOutput(help->text);
        return EXIT_SUCCESS;
    }
    const auto& options = std::get<Options>(parsed);
    switch (options.command) {
        case Command::Groups:
            return listGroups(options);
        case Command::Doctor:
            return doctor(options);
        case Command::Hardware:
            break;
    }
    return hardware(options);
}

}  // namespace

}  // namespace zavcli

int main(int argc, char** argv) {
    zavcli::useUtf8();
    try {
        const int status = zavcli::run(argc, argv);
        if (zavcli::wasInterrupted()) zavcli::endByInterrupt();
        return status;
    } catch (const zavcli::Failure& failure) {
        if (zavcli::wasInterrupted()) zavcli::endByInterrupt();
        zavcli::complain(failure.what());
        return failure.status();
    } catch (const std::exception& error) {
        zavcli::complain(error.what());
        return zavcli::kExitFailed;
    }
}
