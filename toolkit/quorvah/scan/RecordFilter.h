#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvah {

// The content of a file without the passwords that it may contain. A scan of it finds what a scan of the file itself
// finds.
std::string withoutPasswords(std::string_view path, std::string content);

}  // namespace toolkit::quorvah
