#pragma once

namespace zav {

// The process environment: name=value entries, ended by a null.
char** hostEnvironment();

}  // namespace zav
