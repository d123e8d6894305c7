#include <cstdlib>
#include <exception>
#include <optional>

#include "cli/commands/Commands.h"
#include "cli/diff/InventoryDiff.h"
#include "cli/diff/InventoryFile.h"
#include "cli/formats/DiffWriter.h"
#include "cli/system/Failure.h"
#include "cli/system/OutputFile.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

constexpr int kSame = 0;
constexpr int kDifferent = 1;
constexpr int kTrouble = 2;

int compareFiles(const Options& options) {
    std::optional<OutputFile> file;
    if (options.output) file.emplace(*options.output);
    if (options.before == "-" && options.after == "-")
        throw Failure(kTrouble, "only one of the inventories can be standard input");
    const SavedInventory before = readSavedInventory(options.before);
    const SavedInventory after = readSavedInventory(options.after);
    InventoryDiff diff = compareInventories(before, after);
    if (options.ignoreAccess) diff.ignoreAccess();
    for (const std::string& note : diff.notes) printMessage(note);
    const std::string text =
        options.format == Format::Json ? diffJson(before, after, diff) : diffText(before, after, diff);
    if (file)
        file->commit(text);
    else
        writeStandardOutput(text);
    if (messagesWereLost()) return kTrouble;
    return diff.groups.empty() ? kSame : kDifferent;
}

}  // namespace

// Status 1 means that there are differences, so a failure of any kind has another one.
int runDiff(const Options& options) {
    try {
        return compareFiles(options);
    } catch (const std::exception& failure) {
        throw Failure(kTrouble, failure.what());
    }
}

}  // namespace zavcli
