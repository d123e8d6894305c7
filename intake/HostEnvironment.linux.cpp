#include <unistd.h>

#include "intake/HostEnvironment.h"

namespace zav {

char** hostEnvironment() {
    return environ;
}

}  // namespace zav
