#include "cli/scan/Reporter.h"

#include <fmt/format.h>

#include <exception>

#include "cli/system/StandardStreams.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

// Said by the library whenever the toolkit is not the installed one of /etc/zav/zav.ini; 'zav doctor'
// explains them.
bool isNormalWithoutInstallation(const Message& message) {
    return message.text.starts_with("Can't open file [/etc/zav/zav.ini]") ||
           message.text == "Exploiter not correctly registered" ||
           message.text == "ZAV not installed, please specify a directory";
}

// How the software scanner ended is said by the command itself, and a refusal of joined signatures need not be
// the end; settings are echoes of its own command line.
bool isKnownWithoutIt(const Message& message) {
    return (message.function == "SW_ExecuteScanner()" && message.text.starts_with("Exit code: ")) ||
           (message.function == "ZAV_sw_setopt_config" && message.text.starts_with("Plugin ["));
}

}  // namespace

std::string messageLine(const Message& message, Verbosity verbosity, ToolkitSource source) {
    if (verbosity == Verbosity::Trace) {
        return fmt::format("zav[{}.{}] {}: {}", message.component, message.level, printable(message.function),
                           printable(message.text));
    }
    const int highest = verbosity == Verbosity::Notable ? 1 : 0;
    if (message.level > highest) return "";
    if (verbosity == Verbosity::Errors && source != ToolkitSource::Configured &&
        isNormalWithoutInstallation(message))
        return "";
    if (verbosity == Verbosity::Errors && isKnownWithoutIt(message)) return "";
    return fmt::format("zav: {}", printable(message.text));
}

void Reporter::hear(const Message& message) noexcept {
    try {
        progress_.hear(message);
        const std::string line = messageLine(message, verbosity_, source_);
        if (line.empty()) return;
        progress_.hide();
        writeStandardError(line + "\n");
        progress_.show();
    } catch (const std::exception&) {
        // A message that cannot be shown for want of memory must not end the scan.
        return;
    }
}

}  // namespace zavcli
