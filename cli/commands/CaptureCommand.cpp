#include <fmt/format.h>

#include <cstdlib>

#include "cli/capture/Archive.h"
#include "cli/capture/Pseudonyms.h"
#include "cli/capture/RecordedFiles.h"
#include "cli/commands/Commands.h"
#include "cli/commands/HardwareCompleteness.h"
#include "cli/commands/Scans.h"
#include "cli/system/Failure.h"
#include "cli/system/OutputFile.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

int runCapture(const Options& options) {
    const std::optional<Compression> compression = compressionOf(options.archive);
    if (!compression)
        throw Failure(kExitBadUsage,
                      fmt::format("'{}' does not end in .tar.zst, .tar.gz or .tar (see 'zav capture --help')",
                                  options.archive));
    OutputFile file(options.archive, OutputFile::Access::Owner);
    const Workspace workspace;
    const std::string record = workspace.path() + "/record";
    const HardwareInventory inventory = recordMachine(options, workspace, record);
    for (const std::string& message : completenessMessages(inventory)) printMessage(message);
    RecordedFiles files = readRecord(record);
    if (options.sanitize) {
        const auto groups = files.find("etc/group");
        const std::string groupFile = groups == files.end() ? "" : groups->second.content;
        files = Pseudonyms(inventory, groupFile).replaced(files);
    }
    file.commit(archiveOf(files, *compression));
    return lacksRequestedData(inventory, false) ? kExitUnread : EXIT_SUCCESS;
}

}  // namespace zavcli
