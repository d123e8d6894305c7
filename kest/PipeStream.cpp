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

// A failed reading ends the stream like the end of the output. The pipe is closed then: the child must not
// wait for room in a pipe that nobody reads any more.
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

// How many bytes may be read, 0 for none any more. Once the writer has ended, all that it wrote is in the pipe; what
// others may add is not waited for.
std::size_t PipeStream::awaitBytes() {
    if (!left_ && hasWriterEnded()) {
        int inPipe = 0;
        ioctl(pipe_.number(), FIONREAD, &inPipe);
        left_ = static_cast<std::size_t>(inPipe);
    }
    return std::min(left_.value_or(blockSize), blockSize);
}

// Waits until either has happened: the pipe can be read, or the writer has ended. Where waiting fails, reading waits.
bool PipeStream::hasWriterEnded() {
    pollfd events[] = {{pipe_.number(), POLLIN, 0}, {writerEnded_, POLLIN, 0}};
    if (retryInterrupted([&] { return poll(events, std::size(events), -1); }) < 0) return false;
    // Somebody killed what would have told the end.
    if ((events[1].revents & (POLLIN | POLLHUP)) == POLLHUP) writerEnded_ = -1;
    return (events[1].revents & POLLIN) != 0;
}

}  // namespace kest
