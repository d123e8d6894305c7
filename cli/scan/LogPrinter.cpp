#include "cli/scan/LogPrinter.h"

#include <fmt/format.h>

#include <exception>

#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

// The library logs these whenever the toolkit is not the one of the location file. 'zav doctor' explains them.
bool isNormalWithoutInstallation(const LogMessage& message) {
    return message.text.starts_with("Can't open file [/etc/zav/zav.ini]") ||
           message.text == "Exploiter not correctly registered" ||
           message.text == "ZAV not installed, please specify a directory";
}

// The command itself reports how the software scanner ended, and evaluates joined signatures again if they
// are refused. The settings are those of its own command line.
bool isRedundant(const LogMessage& message) {
    return (message.function == "SW_ExecuteScanner()" && message.text.starts_with("Exit code: ")) ||
           (message.function == "ZAV_sw_setopt_config" && message.text.starts_with("Plugin ["));
}

}  // namespace

std::string messageLine(const LogMessage& message, Verbosity verbosity, ToolkitSource source) {
    if (verbosity == Verbosity::Trace) {
        return fmt::format("zav[{}.{}] {}: {}", message.component, message.level, printable(message.function),
                           printable(message.text));
    }
    const int highest = verbosity == Verbosity::Notable ? 1 : 0;
    if (message.level > highest) return "";
    if (verbosity == Verbosity::Errors && source != ToolkitSource::Configured &&
        isNormalWithoutInstallation(message))
        return "";
    if (verbosity == Verbosity::Errors && isRedundant(message)) return "";
    return fmt::format("zav: {}", printable(message.text));
}

void LogPrinter::onMessage(const LogMessage& message) noexcept {
    try {
        progress_.onMessage(message);
        const std::string line = messageLine(message, verbosity_, source_);
        if (line.empty()) return;
        progress_.hide();
        writeStandardError(line + "\n");
        progress_.show();
    } catch (const std::exception&) {
        // Losing a message must not end the scan.
        return;
    }
}

}  // namespace zavcli
