#include "toolkit/quorvis/formats/Inflate.h"

#include <zlib.h>

#include <algorithm>
#include <new>

#include "toolkit/machine/text/InflateStream.h"

namespace toolkit::quorvis {

namespace {

// Grows with what was unpacked, so that a large limit costs nothing.
constexpr std::uint64_t kFirstSize = std::uint64_t{64} << 10;

}  // namespace

bool inflate(std::string_view packed, Packing packing, std::uint64_t limit, std::string& content) {
    content.clear();
    // Negative bits select a stream without a header.
    InflateStream stream(packed, packing == Packing::Raw ? -MAX_WBITS : MAX_WBITS);
    if (!stream.begun()) return false;
    z_stream& state = stream.get();
    int status = Z_OK;
    while (status == Z_OK && content.size() < limit) {
        const std::size_t done = content.size();
        content.resize(std::min(limit, std::max(kFirstSize, std::uint64_t{2} * done)));
        state.next_out = reinterpret_cast<Bytef*>(content.data()) + done;
        state.avail_out = static_cast<uInt>(content.size() - done);
        status = ::inflate(&state, Z_NO_FLUSH);
        content.resize(content.size() - state.avail_out);
        if (status == Z_MEM_ERROR) throw std::bad_alloc();
    }
    return status == Z_STREAM_END || (status == Z_OK && content.size() == limit);
}

}  // namespace toolkit::quorvis
