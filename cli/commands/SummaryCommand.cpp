#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "cli/commands/Commands.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/formats/SummaryWriter.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

// Package managers of Debian and its relatives make this file when an update takes effect at the next boot only.
constexpr const char* kRebootRequired = "/run/reboot-required";

std::string commandsText(const std::vector<std::string>& names, int columns) {
    const std::string sentence = fmt::format(
        "Commands: {}. 'zav hw' shows all hardware, 'zav sw' the software; 'zav --help' describes the rest.",
        fmt::join(names, ", "));
    std::string text = "\n";
    for (const std::string& line : wrap(sentence, columns)) text += line + "\n";
    return text;
}

}  // namespace

int runSummary(const Options& options) {
    const HardwareInventory inventory = scanMachine(options, summaryGroups());
    std::vector<std::string> attention = attentionLines(inventory);
    struct stat file {};
    if (stat(kRebootRequired, &file) == 0)
        attention.push_back(fmt::format("the machine must be restarted: {} exists", kRebootRequired));
    if (geteuid() != 0 && valueOf(inventory.scanInfo, "Privileged") == "false")
        attention.emplace_back("only root may read everything; 'sudo zav' shows more");
    const TableStyle style = tableStyle(options);
    writeStandardOutput(summaryText(inventory, attention, style) +
                        commandsText(options.commandNames, style.columns));
    return EXIT_SUCCESS;
}

}  // namespace zavcli
