// The command zav: a host of the library like any other.
#include <cstdlib>
#include <exception>
#include <variant>

#include "cli/commands/Commands.h"
#include "cli/commands/Doctor.h"
#include "cli/commands/Options.h"
#include "cli/system/Ending.h"
#include "cli/system/Failure.h"
#include "cli/system/Output.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

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
        case Command::Software:
            if (options.check) return checkSoftwareSignatures(options);
            return options.explain ? explainSoftwareSignature(options) : software(options);
        case Command::Hardware:
            break;
    }
    return hardware(options);
}

}  // namespace

}  // namespace zavcli

int main(int argc, char** argv) {
    zavcli::occupyStandardStreams();
    zavcli::cleanUpAtSignals();
    zavcli::useUtf8();
    try {
        const int status = zavcli::run(argc, argv);
        return status == EXIT_SUCCESS && zavcli::messagesWereLost() ? zavcli::kExitFailed : status;
    } catch (const zavcli::Failure& failure) {
        zavcli::complain(failure.what());
        return failure.status();
    } catch (const std::exception& error) {
        zavcli::complain(error.what());
        return zavcli::kExitFailed;
    }
}
