#include "kest/Format.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "kest/Malloced.h"

namespace kest {

wchar_t* i_wsprintf(const char* format, ...) {
    char* formatted = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = vasprintf(&formatted, format, arguments);
    va_end(arguments);
    if (length < 0) return nullptr;
    const Malloced<char> bytes(formatted);
    const auto size = static_cast<std::size_t>(length) + 1;
    auto* const wide = static_cast<wchar_t*>(std::malloc(size * sizeof(wchar_t)));
    if (wide == nullptr) return nullptr;
    for (std::size_t i = 0; i < size; ++i) wide[i] = static_cast<signed char>(formatted[i]);
    return wide;
}

}  // namespace kest
