// Messages for the return codes of the library and the exit statuses of the scanners.
#pragma once

#include <string>
#include <string_view>

namespace zavcli {

// The meaning of a return code of the library, without initial capital and full stop.
std::string_view errorMessage(int code);

// Throws Failure with the message of the code unless the code is success.
void requireSuccess(int code);

// How a scanner that failed ended, given its status as the library reports it.
std::string describeScannerExit(int status, const std::string& scanner);

}  // namespace zavcli
