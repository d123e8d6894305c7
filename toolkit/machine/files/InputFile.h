#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"

namespace toolkit {

// A regular file of the tree that is read in pieces. It is never mapped: whoever may cut it short would end the scanner.
class InputFile {
  public:
    enum class State : std::uint8_t {
        Open,
        Missing,
        Denied,      // the tree has counted it
        Unreadable,  // no regular file, or the system does not give it out
    };

    InputFile(const Root& root, const std::string& path);

    State state() const { return state_; }
    std::uint64_t size() const { return size_; }  // when it was opened

    // How many bytes there were; fewer than were asked for at its end, and where reading fails.
    std::size_t readAt(std::uint64_t offset, std::span<char> bytes);
    // Whether reading failed so far.
    bool failed() const { return failed_; }

  private:
    kest::Descriptor file_;
    State state_ = State::Missing;
    std::uint64_t size_ = 0;
    bool failed_ = false;
};

}  // namespace toolkit
