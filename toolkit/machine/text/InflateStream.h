#pragma once

#include <zlib.h>

#include <new>
#include <string_view>

namespace toolkit {

// A decompressor of zlib with its input. Throws std::bad_alloc.
class InflateStream {
  public:
    // `windowBits` as in inflateInit2(). The input must outlive this.
    InflateStream(std::string_view packed, int windowBits) {
        // The library does not write to its input.
        stream_.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(packed.data()));
        stream_.avail_in = static_cast<uInt>(packed.size());
        const int status = ::inflateInit2(&stream_, windowBits);
        if (status == Z_MEM_ERROR) throw std::bad_alloc();
        begun_ = status == Z_OK;
    }
    ~InflateStream() {
        if (begun_) ::inflateEnd(&stream_);
    }
    InflateStream(const InflateStream&) = delete;
    InflateStream& operator=(const InflateStream&) = delete;

    bool begun() const { return begun_; }
    z_stream& get() { return stream_; }

  private:
    z_stream stream_{};
    bool begun_ = false;
};

}  // namespace toolkit
