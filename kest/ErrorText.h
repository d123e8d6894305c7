#pragma once

#include <string>

namespace kest {

// The name and the meaning of an error number. The text does not depend on the host's locale.
//     errorText(EACCES)   ->   EACCES (permission denied)
std::string errorText(int error);

}  // namespace kest
