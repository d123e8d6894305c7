#include "toolkit/quorvah/sources/GzipText.h"

#include <zlib.h>

#include <algorithm>
#include <new>

namespace toolkit::quorvah {

namespace {

class GzipStream {
  public:
    explicit GzipStream(std::string_view packed) {
        constexpr int kGzipOnly = 16;  // added to the size of the window
        // The library does not write to its input.
        stream_.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(packed.data()));
        stream_.avail_in = static_cast<uInt>(packed.size());
        const int status = ::inflateInit2(&stream_, MAX_WBITS + kGzipOnly);
        if (status == Z_MEM_ERROR) throw std::bad_alloc();
        begun_ = status == Z_OK;
    }
    ~GzipStream() {
        if (begun_) ::inflateEnd(&stream_);
    }
    GzipStream(const GzipStream&) = delete;
    GzipStream& operator=(const GzipStream&) = delete;

    bool begun() const { return begun_; }
    z_stream& get() { return stream_; }

  private:
    z_stream stream_{};
    bool begun_ = false;
};

}  // namespace

bool gunzip(std::string_view packed, std::size_t limit, std::string& text) {
    constexpr std::size_t kFirstSize = std::size_t{64} << 10;
    text.clear();
    GzipStream stream(packed);
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
