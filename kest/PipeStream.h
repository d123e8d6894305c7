#pragma once

#include <cstddef>
#include <memory>

#include "kest/Descriptor.h"
#include "kest/OutputStream.h"

namespace kest {

// The reading end of a pipe, read in blocks: each block is what has arrived until then.
class PipeStream final : public OutputStream {
  public:
    // REQUIRES: called once, before the first reading.
    void open(Descriptor pipe) { pipe_ = std::move(pipe); }

    int read() override {
        if (next_ == end_ && !fill()) return -1;
        return static_cast<unsigned char>(*next_++);
    }

    std::string_view readSome() override;

  private:
    bool fill();

    static constexpr std::size_t blockSize = std::size_t{64} * 1024;

    // Closed from the end of the output on.
    Descriptor pipe_;
    const std::unique_ptr<char[]> block_ = std::make_unique_for_overwrite<char[]>(blockSize);
    const char* next_ = nullptr;
    const char* end_ = nullptr;
};

}  // namespace kest
