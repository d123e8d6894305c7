// The header compiles as C++ without any other header before it.
#include "include/zav.h"
#include "include/zav_codes.h"

static_assert(sizeof(wchar_t) == 4, "wide characters have four bytes");

// The functions have C linkage, and the callback may be a lambda without captures.
int useHeader(ZAVCtx** handle) {
    const ZAVlogCallback callback = [](int, int, void*, const char*, const char*) {};
    return ZAV_init("header", callback, nullptr, nullptr, nullptr, handle);
}
