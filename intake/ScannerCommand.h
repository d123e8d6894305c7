#pragma once

#include <string>
#include <vector>

namespace zav {

// The command that runs a scanner, in two forms: as it is logged, and as the scanner gets it.
//     ScannerCommand command(L"/opt/zav/quorvah");
//     command.add(L"-c", config).add(L"-o", output);
class ScannerCommand {
  public:
    // The path of the program, which is split at blanks.
    explicit ScannerCommand(std::wstring program);

    // An option and the file that follows it.
    ScannerCommand& add(const wchar_t* option, const std::wstring& file);

    // One line: the program as it stands, and each file in double quotes, whatever it holds.
    const std::wstring& line() const { return line_; }

    // What the program is called with, its own path first. Each file is one argument, whatever it holds.
    const std::vector<std::string>& arguments() const { return arguments_; }

  private:
    std::wstring line_;
    std::vector<std::string> arguments_;
};

}  // namespace zav
