// The messages of the process that evaluates signatures to the one that writes the output files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

struct ScanMessage {
    enum class Kind : std::uint8_t {
        Signatures,   // number: of signatures
        Match,        // text: the element for the output file
        Event,        // number: the code; texts: path, text, guid, leaf
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

}  // namespace toolkit::quorvis
