#pragma once

#include <string>
#include <vector>

namespace zav {

// The command that runs a scanner: as a line for the log and as a list of arguments for the process.
//     ScannerCommand command(L"/opt/zav/quorvah");
//     command.add(L"-c", config).add(L"-o", output);
class ScannerCommand {
  public:
    // `program` is the path of the scanner. Blanks in it separate arguments.
    explicit ScannerCommand(std::wstring program);

    // Adds an option and the file that follows it.
    ScannerCommand& add(const wchar_t* option, const std::wstring& file);

    // The program as given, and the options with each file in double quotes. Nothing is escaped.
    const std::wstring& line() const { return line_; }

    // The program's path and its arguments. Each file is one argument, whatever characters it contains.
    const std::vector<std::string>& arguments() const { return arguments_; }

  private:
    std::wstring line_;
    std::vector<std::string> arguments_;
};

}  // namespace zav
