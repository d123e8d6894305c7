// What the process that evaluates signatures tells the one that writes the output files.
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
        Signatures,   // number: how many there are
        Match,        // text: the element for the output file
        Event,        // number: the code; texts: path, text, guid, leaf
        Explanation,  // text: a line
        Refused,      // text: what is wrong with the signatures file
        Failed,       // text: why nothing can be told
        Done,         // everything has been evaluated
    };
    Kind kind{};
    std::uint64_t number = 0;
    std::vector<std::string> texts;
};

ScanMessage messageOf(Event event);
Event eventOf(ScanMessage message);

// As bytes.
std::string encoded(const ScanMessage& message);

// Puts messages together from the pieces in which their bytes come. Nothing that they say of their size is believed
// beyond `kLongest`.
class ScanMessageReader {
  public:
    static constexpr std::size_t kLongest = std::size_t{32} << 20;

    enum class Next : std::uint8_t { Message, Incomplete, Broken };

    void add(std::string_view bytes) { bytes_.append(bytes); }
    Next next(ScanMessage& message);

  private:
    std::string bytes_;
    std::size_t read_ = 0;
};

}  // namespace toolkit::quorvis
