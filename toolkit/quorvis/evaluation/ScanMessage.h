// The messages of the process that evaluates signatures to the one that writes the output files.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/walk/WalkProgress.h"

namespace toolkit::quorvis {

struct ScanMessage {
    enum class Kind : std::uint8_t {
        Signatures,   // number: of signatures
        Match,        // text: the element for the output file
        Event,        // number: the code, flags and the count; texts: path, text, guid, leaf, because
        Explanation,  // text: a line
        Refused,      // text: why the signatures file is refused
        Failed,       // text: why there is no result
        Done,         // the evaluation is complete
    };
    Kind kind{};
    std::uint64_t number = 0;
    std::vector<std::string> texts;
};

ScanMessage messageOf(Event event);
Event eventOf(ScanMessage message);

// The bytes of a message.
std::string encoded(const ScanMessage& message);

// Reads messages from a stream of bytes. A message that claims to be longer than kMaxBytes is broken.
class ScanMessageReader {
  public:
    static constexpr std::size_t kMaxBytes = std::size_t{32} << 20;

    enum class Next : std::uint8_t { Message, Incomplete, Broken };

    void add(std::string_view bytes) { bytes_.append(bytes); }
    Next next(ScanMessage& message);

  private:
    std::string bytes_;
    std::size_t read_ = 0;
};

// Memory that a worker shares with its supervisor. The worker collects its messages here and writes them to the pipe when
// there are many. So a message costs no system call, and none is lost when the worker dies.
struct WorkerOutput {
    SharedDeadline deadline;                 // of what the worker is doing
    std::atomic<std::size_t> count = 0;      // of the signatures; 0 until they are read
    std::atomic<std::size_t> begun = 0;      // signatures
    std::array<char, 136> guid{};            // of the latest one
    std::atomic<std::size_t> detection = 0;  // of the latest one, the Detection that is being evaluated
    std::atomic<bool> lastDetection = true;  // whether no other Detection of it follows
    WalkProgress walk;
    std::atomic<std::size_t> items = 0;      // to be evaluated; 0 until that is known
    std::atomic<std::size_t> itemsDone = 0;  // of them
    std::atomic<std::uint64_t> sent = 0;     // bytes that were written to the pipe
    std::atomic<std::size_t> used = 0;       // bytes below that were not
    std::array<char, std::size_t{64} << 10> bytes;
};

struct UnmapOutput {
    void operator()(WorkerOutput* output) const;
};
// Shared with the child processes that start while it exists. Throws std::system_error when there is no memory.
std::unique_ptr<WorkerOutput, UnmapOutput> makeSharedOutput();

// The bytes of messages that the worker left in its output, after `received` bytes came through the pipe. REQUIRES: the
// worker was killed or has ended, and the pipe is empty.
std::string bytesLeftIn(const WorkerOutput& output, std::uint64_t received);

}  // namespace toolkit::quorvis
