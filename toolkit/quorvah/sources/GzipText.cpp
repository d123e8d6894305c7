#include "toolkit/quorvah/sources/GzipText.h"

#include <zlib.h>

#include <algorithm>
#include <new>

#include "toolkit/machine/text/InflateStream.h"

namespace toolkit::quorvah {

bool gunzip(std::string_view packed, std::size_t limit, std::string& text) {
    constexpr std::size_t kFirstSize = std::size_t{64} << 10;
    constexpr int kGzipOnly = 16;  // added to the size of the window
    text.clear();
    InflateStream stream(packed, MAX_WBITS + kGzipOnly);
    if (!stream.begun()) return false;
    z_stream& state = stream.get();
    int status = Z_OK;
    while (status == Z_OK && text.size() < limit) {
        const std::size_t done = text.size();
        text.resize(std::min(limit, std::max(kFirstSize, 2 * done)));
        state.next_out = reinterpret_cast<Bytef*>(text.data()) + done;
        state.avail_out = static_cast<uInt>(text.size() - done);
        status = ::inflate(&state, Z_NO_FLUSH);
        text.resize(text.size() - state.avail_out);
        if (status == Z_MEM_ERROR) throw std::bad_alloc();
        if (status == Z_STREAM_END && state.avail_in > 0) status = ::inflateReset(&state);  // the next member
    }
    return status == Z_STREAM_END;
}

}  // namespace toolkit::quorvah
