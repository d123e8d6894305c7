#include "intake/ScannerCommand.h"

#include <utility>

#include "kest/CommandLine.h"
#include "kest/Text.h"

namespace zav {

ScannerCommand::ScannerCommand(std::wstring program)
    : line_(std::move(program)), arguments_(kest::splitCommandLine(kest::narrow(line_))) {}

ScannerCommand& ScannerCommand::add(const wchar_t* option, const std::wstring& file) {
    line_.append(L" ").append(option).append(L" \"").append(file).append(L"\"");
    arguments_.push_back(kest::narrow(option));
    arguments_.push_back(kest::narrow(file));
    return *this;
}

}  // namespace zav
