#include "kest/ErrorText.h"

namespace kest {

// The C library has only texts in the language of the host.
std::string errorText(int error) {
    return "error " + std::to_string(error);
}

}  // namespace kest
