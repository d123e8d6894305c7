#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "kest/Descriptor.h"
#include "kest/OutputStream.h"

namespace kest {

// The reading end of a pipe, read in blocks. A block holds the bytes that have arrived so far.
class PipeStream final : public OutputStream {
  public:
    // `writerEnded` is a descriptor that becomes readable when the writer ends. The stream then ends after the bytes
    // that are in the pipe, even if other processes hold the pipe open. With -1 it ends when no process does.
    // REQUIRES: called once, before the first read; `writerEnded` stays open until the end of the stream.
    void open(Descriptor pipe, int writerEnded = -1) {
        pipe_ = std::move(pipe);
        writerEnded_ = writerEnded;
    }

    int read() override {
        if (next_ == end_ && !fill()) return -1;
        return static_cast<unsigned char>(*next_++);
    }

    std::string_view readSome() override;

  private:
    bool fill();
    std::size_t awaitBytes();
    bool hasWriterEnded();

    static constexpr std::size_t blockSize = std::size_t{64} * 1024;

    // Closed at the end of the output.
    Descriptor pipe_;
    int writerEnded_ = -1;
    // The bytes left in the pipe; set when the writer has ended.
    std::optional<std::size_t> left_;
    const std::unique_ptr<char[]> block_ = std::make_unique_for_overwrite<char[]>(blockSize);
    const char* next_ = nullptr;
    const char* end_ = nullptr;
};

}  // namespace kest
