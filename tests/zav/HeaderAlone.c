/* The header compiles without any other header before it. */
#include "include/zav.h"
#include "include/zav_codes.h"

typedef char wide_characters_have_four_bytes[sizeof(wchar_t) == 4 ? 1 : -1];

/* Everything that is declared can be used. */
int use_header(ZAVCtx** handle, ZAVHwCtx** context, ZAVlogCallback callback);
int use_header(ZAVCtx** handle, ZAVHwCtx** context, ZAVlogCallback callback) {
    const int code = ZAV_init("header", callback, NULL, NULL, NULL, handle);
    return code != ZAV_SUCCESS ? code : ZAV_hw_init(*handle, callback, NULL, context);
}
