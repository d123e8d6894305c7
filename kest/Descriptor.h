#pragma once

#include <unistd.h>

#include <utility>

namespace kest {

// A file descriptor that is closed when its owner dies.
class Descriptor {
  public:
    Descriptor() = default;
    // Takes `number` over; a negative one is no descriptor.
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        const Descriptor replaced(std::exchange(number_, std::exchange(other.number_, -1)));
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    bool isOpen() const { return number_ >= 0; }
    // -1 when there is none.
    int number() const { return number_; }

    void close() {
        if (isOpen()) ::close(std::exchange(number_, -1));
    }

  private:
    int number_ = -1;
};

}  // namespace kest
