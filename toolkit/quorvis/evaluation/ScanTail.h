#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "toolkit/quorvis/files/LookupBudget.h"

namespace toolkit::quorvis {

// Memory that both processes of a scan see. What the one that evaluates has to tell stands here until it fills a piece
// for the pipe: so telling costs no system call, and nothing is lost when that process ends in the middle.
struct ScanTail {
    SharedDeadline deadline;              // of what the evaluation is doing
    std::atomic<std::size_t> begun = 0;   // signatures
    std::array<char, 136> guid{};         // of the latest one
    std::atomic<std::uint64_t> sent = 0;  // bytes that went through the pipe
    std::atomic<std::size_t> used = 0;    // bytes here that have not
    std::array<char, std::size_t{64} << 10> bytes;
};

}  // namespace toolkit::quorvis
