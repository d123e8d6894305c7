#include "kest/Format.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace kest {

namespace {

struct Free {
    void operator()(void* block) const { std::free(block); }
};

}  // namespace

wchar_t* i_wsprintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    wchar_t* wide = nullptr;
    if (length >= 0) {
        const auto size = static_cast<std::size_t>(length) + 1;
        const std::unique_ptr<char, Free> bytes(static_cast<char*>(std::malloc(size)));
        wide = static_cast<wchar_t*>(std::malloc(size * sizeof(wchar_t)));
        if (bytes == nullptr || wide == nullptr) {
            std::free(wide);
            wide = nullptr;
        } else {
            std::vsnprintf(bytes.get(), size, format, again);
            for (std::size_t i = 0; i < size; ++i) wide[i] = static_cast<signed char>(bytes.get()[i]);
        }
    }
    va_end(again);
    return wide;
}

}  // namespace kest
