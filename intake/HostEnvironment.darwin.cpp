#include <crt_externs.h>

#include "intake/HostEnvironment.h"

namespace zav {

char** hostEnvironment() {
    return *_NSGetEnviron();
}

}  // namespace zav
