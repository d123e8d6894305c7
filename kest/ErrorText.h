#pragma once

#include <string>

namespace kest {

// What an error number of the system means, in words that follow no locale: a log can carry them in any host.
//     errorText(EACCES)   ->   EACCES (permission denied)
std::string errorText(int error);

}  // namespace kest
