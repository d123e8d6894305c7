#include "intake/ScannerProcess.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "intake/EnvironmentBlock.h"
#include "intake/HostEnvironment.h"
#include "kest/Runtime.h"
#include "kest/Text.h"

namespace zav {

ScannerProcess::ScannerProcess(ZAVlog* log, const char* function, const std::wstring& command,
                               const std::wstring& installDir)
    : log_(log), function_(function) {
    const std::string environment = environmentBlock(hostEnvironment(), kest::narrow(installDir));
    kest::Runtime runtime;
    child_.reset(runtime.launch(kest::String(command), environment.c_str()));
    if (child_ == nullptr && log_ != nullptr) log_->traceMIN(function_, "Execution of command failed..");
}

int ScannerProcess::drain() {
    kest::OutputStream* const stream = child_->getOutputStream();
    std::string line;
    for (std::string_view output = stream->readSome(); !output.empty(); output = stream->readSome()) {
        logLines(output, line);
    }
    return child_->waitFor();
}

// `line` holds what came before and goes on to hold what has no line feed yet.
void ScannerProcess::logLines(std::string_view output, std::string& line) const {
    for (;;) {
        const std::size_t end = output.find('\n');
        const std::string_view part = output.substr(0, end);
        std::copy_if(part.begin(), part.end(), std::back_inserter(line),
                     [](char byte) { return byte != '\r'; });
        if (end == std::string_view::npos) return;
        if (log_ != nullptr) log_->traceMAX(function_, "STDOUT data: [%s]", line.c_str());
        line.clear();
        output.remove_prefix(end + 1);
    }
}

int ScannerProcess::check() {
    const int code = child_->exitValue();
    if (log_ == nullptr) return code;
    if (code == 0) {
        log_->traceMAX(function_, "Exit code: %d (OK)", code);
    } else {
        log_->traceMIN(function_, "Exit code: %d (ERROR)", code);
    }
    return code;
}

}  // namespace zav
