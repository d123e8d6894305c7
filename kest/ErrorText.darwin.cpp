#include "kest/ErrorText.h"

namespace kest {

// The C library offers only texts that depend on the host's locale.
std::string errorText(int error) {
    return "error " + std::to_string(error);
}

}  // namespace kest
