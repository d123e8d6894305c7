#include "cli/commands/ScanSetup.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "cli/scan/LibraryHandle.h"
#include "cli/scan/LocationFile.h"
#include "cli/system/Failure.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

void passFlag(bool given, const char* variable) {
    if (given) setenv(variable, "1", 1);
}

// Whether an option is given that an installed scanner may not support. It would then report another machine than
// requested, or values that were to be hidden.
bool needsBundledScanner(const Options& options) {
    return options.command == Command::Capture || options.root || options.sanitize || options.noVolatile ||
           options.pretty;
}

}  // namespace

Toolkit selectToolkit(const Options& options, const Scanner& scanner) {
    const std::string configured =
        needsBundledScanner(options) ? "" : readLocationFile(kLocationFile, kProductName).toolkit;
    Toolkit toolkit =
        chooseToolkit({options.toolkit, configured, bundledDirectories(commandPath())}, scanner);
    requireTrusted(toolkit, scanner);
    if (toolkit.source == ToolkitSource::Bundled && !configured.empty())
        printMessage(fmt::format("{} names {}, which contains no program '{}'; the one in {} is used",
                                 kLocationFile, configured, scanner.program, toolkit.directory));
    return toolkit;
}

std::string passScannedRoot(const Options& options, const Scanner& scanner) {
    if (options.root) setenv(scanner.rootVariable, std::filesystem::canonical(*options.root).c_str(), 1);
    const char* const root = std::getenv(scanner.rootVariable);
    return root == nullptr ? "" : root;
}

void passScanOptions(const Options& options) {
    passFlag(options.sanitize, "QUORVAH_SANITIZE");
    passFlag(options.noVolatile, "QUORVAH_NO_VOLATILE");
    passFlag(options.pretty, "QUORVAH_PRETTY");
}

TableStyle tableStyle(const Options& options) {
    TableStyle style;
    style.columns = terminalColumns(options.output ? -1 : STDOUT_FILENO);
    style.fitted = !options.output && (isatty(STDOUT_FILENO) != 0 || std::getenv("COLUMNS") != nullptr);
    style.bold = !options.output && isCapableTerminal(STDOUT_FILENO) && std::getenv("NO_COLOR") == nullptr;
    style.overview = options.groups.empty();
    style.everything = options.all || options.details;
    return style;
}

InventoryOutput::InventoryOutput(const Options& options) : options_(options) {
    if (options.output) file_.emplace(*options.output);
    if (!options.csvDirectory) return;
    const std::string& directory = *options.csvDirectory;
    if (::mkdir(directory.c_str(), 0777) != 0 && errno != EEXIST)
        throw Failure(kExitFailed,
                      fmt::format("cannot make the directory '{}': {}", directory, systemErrorText(errno)));
    if (!std::filesystem::is_directory(directory))
        throw Failure(kExitFailed, fmt::format("'{}' is not a directory; name another one", directory));
}

// Each file is new, and appears complete or not at all.
void InventoryOutput::writeFiles(const std::vector<CsvFile>& files) {
    for (const CsvFile& file : files) OutputFile(*options_.csvDirectory + "/" + file.name).commit(file.text);
}

void InventoryOutput::write(const std::string& text) {
    if (file_)
        file_->commit(text);
    else
        writeStandardOutput(text);
}

}  // namespace zavcli
