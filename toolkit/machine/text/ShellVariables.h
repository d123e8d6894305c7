#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toolkit {

// The assignments NAME=value of a file that is written for the shell, such as /etc/os-release, with quotes
// and backslashes resolved. Comments and all other lines are ignored.
class ShellVariables {
  public:
    explicit ShellVariables(std::string_view text);

    // The value last assigned; empty when there is none.
    std::string value(std::string_view name) const;

  private:
    std::vector<std::pair<std::string, std::string>> assignments_;
};

}  // namespace toolkit
