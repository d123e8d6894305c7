#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "kest/Descriptor.h"
#include "kest/OutputStream.h"

namespace kest {

// The reading end of a pipe, read in blocks: each block is what has arrived until then.
class PipeStream final : public OutputStream {
  public:
    // `writerEnded` is a descriptor that has something to read once the writer has ended. The stream ends with what
    // is in the pipe then, though others may hold the pipe open. With -1 it ends when nobody does any more.
    // REQUIRES: called once, before the first reading; `writerEnded` stays open until the end of the stream.
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

    // Closed from the end of the output on.
    Descriptor pipe_;
    int writerEnded_ = -1;
    // Set from the writer's end on: the bytes in the pipe that are still to be read.
    std::optional<std::size_t> left_;
    const std::unique_ptr<char[]> block_ = std::make_unique_for_overwrite<char[]>(blockSize);
    const char* next_ = nullptr;
    const char* end_ = nullptr;
};

}  // namespace kest
