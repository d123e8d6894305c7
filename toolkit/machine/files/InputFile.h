#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"

namespace toolkit {

// A regular file of the tree that is read in pieces. It is never mapped, because truncating a mapped file would kill the
// scanner.
class InputFile {
  public:
    enum class State : std::uint8_t {
        Open,
        Missing,
        Denied,      // the tree has counted it
        Unreadable,  // not a regular file, or reading fails
    };

    InputFile(const Root& root, const std::string& path);

    State state() const { return state_; }
    std::uint64_t size() const { return size_; }  // when it was opened

    // Returns the number of bytes read. It is smaller than requested at the end of the file and when reading fails. It is 0
    // when the file is not open.
    std::size_t readAt(std::uint64_t offset, std::span<char> bytes);
    // Whether a read has failed.
    bool failed() const { return failed_; }

  private:
    kest::Descriptor file_;
    State state_ = State::Missing;
    std::uint64_t size_ = 0;
    bool failed_ = false;
};

}  // namespace toolkit
