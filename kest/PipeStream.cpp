#include "kest/PipeStream.h"

#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <iterator>

#include "kest/Retry.h"

namespace kest {

std::string_view PipeStream::readSome() {
    if (next_ == end_ && !fill()) return {};
    const std::string_view arrived(next_, static_cast<std::size_t>(end_ - next_));
    next_ = end_;
    return arrived;
}

// A read error ends the stream. The pipe is closed then, so the child does not wait for space in a pipe that is no
// longer read.
bool PipeStream::fill() {
    if (!pipe_.isOpen()) return false;
    const std::size_t size = awaitBytes();
    const ssize_t length = retryInterrupted([&] { return ::read(pipe_.number(), block_.get(), size); });
    if (length <= 0) {
        pipe_.close();
        return false;
    }
    if (left_) *left_ -= static_cast<std::size_t>(length);
    next_ = block_.get();
    end_ = next_ + length;
    return true;
}

// The number of bytes to read; 0 at the end. When the writer has ended, everything that it wrote is in the pipe, and
// later output of other processes is not waited for.
std::size_t PipeStream::awaitBytes() {
    if (!left_ && hasWriterEnded()) {
        int inPipe = 0;
        ioctl(pipe_.number(), FIONREAD, &inPipe);
        left_ = static_cast<std::size_t>(inPipe);
    }
    return std::min(left_.value_or(blockSize), blockSize);
}

// Waits until the pipe is readable or the writer has ended, and returns whether the writer has. If poll fails, read
// waits instead.
bool PipeStream::hasWriterEnded() {
    pollfd events[] = {{pipe_.number(), POLLIN, 0}, {writerEnded_, POLLIN, 0}};
    if (retryInterrupted([&] { return poll(events, std::size(events), -1); }) < 0) return false;
    // The process that would have reported the end was killed.
    if ((events[1].revents & (POLLIN | POLLHUP)) == POLLHUP) writerEnded_ = -1;
    return (events[1].revents & POLLIN) != 0;
}

}  // namespace kest
