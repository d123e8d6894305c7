#include "kest/PipeStream.h"

#include <cerrno>

namespace kest {

std::string_view PipeStream::readSome() {
    if (next_ == end_ && !fill()) return {};
    const std::string_view arrived(next_, static_cast<std::size_t>(end_ - next_));
    next_ = end_;
    return arrived;
}

// A failed reading ends the stream like the end of the output. The pipe is closed then: the child must not
// wait for room in a pipe that nobody reads any more.
bool PipeStream::fill() {
    if (!pipe_.isOpen()) return false;
    ssize_t length = 0;
    do {
        length = ::read(pipe_.number(), block_.get(), blockSize);
    } while (length < 0 && errno == EINTR);
    if (length <= 0) {
        pipe_.close();
        return false;
    }
    next_ = block_.get();
    end_ = next_ + length;
    return true;
}

}  // namespace kest
