#pragma once

namespace zav {

// The environment of the process: name=value entries, ended by a null pointer.
char** hostEnvironment();

}  // namespace zav
