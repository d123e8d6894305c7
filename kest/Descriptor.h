#pragma once

#include <unistd.h>

#include <utility>

namespace kest {

// Owns a file descriptor and closes it on destruction.
class Descriptor {
  public:
    Descriptor() = default;
    // Takes ownership of `number`. A negative number stands for no descriptor.
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
    // Negative when there is no descriptor.
    int number() const { return number_; }

    void close() {
        if (isOpen()) ::close(std::exchange(number_, -1));
    }

  private:
    int number_ = -1;
};

}  // namespace kest
