#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace toolkit {

// In bytes. A longer text is not a name, a version or a line of description.
inline constexpr std::size_t kMaxValueLength = 4096;

// How much may be spent on reading an untrusted file. Real files need far less.
struct Allowance {
    std::uint64_t bytesRead = std::uint64_t{512} << 20;
    std::uint64_t bytesKept = std::uint64_t{16} << 20;
    std::uint64_t items = 100'000;
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

// The rest of an allowance. When one part of it is used up, nothing more is allowed.
class Budget {
  public:
    enum class Spent : std::uint8_t { Nothing, Bytes, Kept, Items, Time };

    explicit Budget(const Allowance& allowance = {}) : left_(allowance) {}

    // These reduce the allowance. They return false when it does not suffice, or did not suffice before.
    bool read(std::uint64_t bytes) { return take(left_.bytesRead, bytes, Spent::Bytes) && inTime(); }
    bool keep(std::uint64_t bytes) { return take(left_.bytesKept, bytes, Spent::Kept); }
    bool item() {
        constexpr std::uint64_t kBetweenLooks = 64;  // reading the clock costs more than many items
        return take(left_.items, 1, Spent::Items) && (left_.items % kBetweenLooks != 0 || inTime());
    }

    Spent spent() const { return spent_; }
    bool isSpent() const { return spent_ != Spent::Nothing; }

  private:
    bool take(std::uint64_t& left, std::uint64_t wanted, Spent what) {
        if (!isSpent() && wanted > left) spent_ = what;
        if (isSpent()) return false;
        left -= wanted;
        return true;
    }
    bool inTime() {
        if (left_.deadline && std::chrono::steady_clock::now() >= *left_.deadline) spent_ = Spent::Time;
        return !isSpent();
    }

    Allowance left_;
    Spent spent_ = Spent::Nothing;
};

}  // namespace toolkit
