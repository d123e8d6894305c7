#pragma once

namespace kest {

// The narrow printf format and its arguments as a new wide string, which the caller releases with free();
// null when memory ran out or the format could not be carried out.
//     wchar_t* suffix = i_wsprintf("_%d", 30);
wchar_t* i_wsprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace kest
