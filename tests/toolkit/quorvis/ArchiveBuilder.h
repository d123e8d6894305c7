#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace toolkit::quorvis {

// Little-endian. Bytes beyond the number are 0.
inline std::string littleEndianBytes(std::uint64_t value, std::size_t width) {
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i) {
        bytes += static_cast<char>(value & 0xFFU);
        value >>= 8U;
    }
    return bytes;
}

// Builds a ZIP archive.
class ArchiveBuilder {
  public:
    // `before` is a prefix of the file, for example a script.
    explicit ArchiveBuilder(std::string before = {}) : file_(std::move(before)), start_(file_.size()) {}

    void add(const std::string& name, const std::string& content, bool deflated = true, unsigned flags = 0) {
        const std::string packed = deflated ? deflate(content) : content;
        const std::string common = put(flags, 2) + put(deflated ? 8 : 0, 2) + put(0, 4) + put(0, 4) +
                                   put(packed.size(), 4) + put(content.size(), 4) + put(name.size(), 2);
        directory_ += "PK\x01\x02" + put(20, 2) + put(20, 2) + common + put(0, 2) + put(0, 2) + put(0, 2) +
                      put(0, 2) + put(0, 4) + put(file_.size() - start_, 4) + name;
        file_ += "PK\x03\x04" + put(20, 2) + common + put(0, 2) + name + packed;
        ++count_;
    }

    // With ZIP64 records if `large` is set.
    std::string build(bool large = false, const std::string& comment = {}) const {
        const std::size_t at = file_.size() - start_;
        std::string end;
        if (large) {
            end += "PK\x06\x06" + put(44, 8) + put(45, 2) + put(45, 2) + put(0, 4) + put(0, 4) +
                   put(count_, 8) + put(count_, 8) + put(directory_.size(), 8) + put(at, 8);
            end += "PK\x06\x07" + put(0, 4) + put(at + directory_.size(), 8) + put(1, 4);
        }
        end += "PK\x05\x06" + put(0, 4) + put(large ? 0xFFFF : count_, 2) + put(large ? 0xFFFF : count_, 2) +
               put(large ? 0xFFFFFFFF : directory_.size(), 4) + put(large ? 0xFFFFFFFF : at, 4) +
               put(comment.size(), 2) + comment;
        return file_ + directory_ + end;
    }

  private:
    static std::string put(std::uint64_t value, std::size_t width) { return littleEndianBytes(value, width); }

    static std::string deflate(std::string content) {
        z_stream stream{};
        if (::deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
            throw std::runtime_error("deflate");
        std::string packed(::deflateBound(&stream, content.size()), '\0');
        stream.next_in = reinterpret_cast<Bytef*>(content.data());
        stream.avail_in = static_cast<uInt>(content.size());
        stream.next_out = reinterpret_cast<Bytef*>(packed.data());
        stream.avail_out = static_cast<uInt>(packed.size());
        ::deflate(&stream, Z_FINISH);
        packed.resize(stream.total_out);
        ::deflateEnd(&stream);
        return packed;
    }

    std::string file_;
    std::string directory_;
    std::size_t start_;
    std::size_t count_ = 0;
};

}  // namespace toolkit::quorvis
