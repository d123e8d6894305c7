#pragma once

namespace kest {

// Formats like printf and returns the result as a new wide string, each byte widened as a signed character. The caller
// releases it with free(). Null when memory runs out or formatting fails.
//     wchar_t* suffix = i_wsprintf("_%d", 30);
wchar_t* i_wsprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace kest
