// The parameters that the boot loader passed to the kernel (/proc/cmdline).
#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvah {

// The value of the last parameter "key=value"; empty if there is none.
std::string bootParameter(std::string_view commandLine, std::string_view key);

// The command line with the values of passwords and other secrets replaced by "***".
std::string withoutSecrets(std::string_view commandLine);

}  // namespace toolkit::quorvah
