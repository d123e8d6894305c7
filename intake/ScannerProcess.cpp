#include "intake/ScannerProcess.h"

#include <string_view>
#include <utility>

#include "intake/HostEnvironment.h"
#include "intake/ScannerEnvironment.h"
#include "kest/Runtime.h"
#include "kest/Text.h"

namespace zav {

namespace {

void appendWithoutReturns(std::string& line, std::string_view part) {
    for (;;) {
        const std::size_t end = part.find('\r');
        line.append(part.substr(0, end));
        if (end == std::string_view::npos) return;
        part.remove_prefix(end + 1);
    }
}

}  // namespace

ScannerProcess::ScannerProcess(ZAVlog* log, const char* function, const std::vector<std::string>& arguments,
                               const std::wstring& installDir)
    : log_(orSilent(log)), function_(function) {
    const std::string environment = scannerEnvironment(hostEnvironment(), kest::narrow(installDir));
    kest::LaunchResult launch = kest::Runtime().launch(arguments, environment.c_str());
    child_ = std::move(launch.child);
    if (child_ != nullptr) return;
    const char* const program = arguments.empty() ? "" : arguments.front().c_str();
    log_.traceMIN(function_, "Cannot start \"%s\": %s", program, launch.failure.c_str());
    log_.traceMIN(function_, "Execution of command failed..");
}

int ScannerProcess::drain() {
    kest::OutputStream* const stream = child_->getOutputStream();
    const bool isLogged = log_.hasCallback();
    std::string line;
    for (std::string_view output = stream->readSome(); !output.empty(); output = stream->readSome()) {
        if (isLogged) logLines(output, line);
    }
    return child_->waitFor();
}

// `line` holds the beginning of a line whose line feed has not arrived yet.
void ScannerProcess::logLines(std::string_view output, std::string& line) const {
    for (;;) {
        const std::size_t end = output.find('\n');
        appendWithoutReturns(line, output.substr(0, end));
        if (end == std::string_view::npos) return;
        log_.traceMAX(function_, "STDOUT data: [%s]", line.c_str());
        line.clear();
        output.remove_prefix(end + 1);
    }
}

int ScannerProcess::check() {
    const int code = child_->exitValue();
    if (code == 0) {
        log_.traceMAX(function_, "Exit code: %d (OK)", code);
    } else {
        log_.traceMIN(function_, "Exit code: %d (ERROR)", code);
    }
    return code;
}

}  // namespace zav
