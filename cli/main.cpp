// The command zav, which is a host of the library like any other.
#include <cstdlib>
#include <exception>
#include <variant>

#include "cli/commands/Commands.h"
#include "cli/commands/Options.h"
#include "cli/system/Failure.h"
#include "cli/system/SignalCleanup.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

int run(int argc, const char* const* argv) {
    const auto parsed = parseOptions(argc, argv);
    if (const auto* help = std::get_if<HelpText>(&parsed)) {
        writeStandardOutput(help->text);
        return EXIT_SUCCESS;
    }
    const auto& options = std::get<Options>(parsed);
    switch (options.command) {
        case Command::Capture:
            return runCapture(options);
        case Command::Diff:
            return runDiff(options);
        case Command::Groups:
            return runGroups(options);
        case Command::Doctor:
            return runDoctor(options);
        case Command::Facts:
            return runFacts(options);
        case Command::Sbom:
            return runSbom(options);
        case Command::Summary:
            return runSummary(options);
        case Command::Export:
            return runExport(options);
        case Command::Report:
            return runReport(options);
        case Command::Software:
            if (options.suggest) return runSuggestion(options);
            if (options.list) return runSignatureList(options);
            if (options.check) return runSignatureCheck(options);
            return options.explain ? runSignatureExplanation(options) : runSoftware(options);
        case Command::Hardware:
            break;
    }
    return runHardware(options);
}

}  // namespace

}  // namespace zavcli

int main(int argc, char** argv) {
    zavcli::reserveStandardStreams();
    zavcli::installSignalCleanup();
    zavcli::useUtf8();
    try {
        const int status = zavcli::run(argc, argv);
        return status == EXIT_SUCCESS && zavcli::messagesWereLost() ? zavcli::kExitFailed : status;
    } catch (const zavcli::Failure& failure) {
        zavcli::printMessage(failure.what());
        return failure.status();
    } catch (const std::exception& error) {
        zavcli::printMessage(error.what());
        return zavcli::kExitFailed;
    }
}
