#include "cli/scan/ScannerLines.h"

namespace zavcli {

namespace {

constexpr std::size_t kMost = 1000;

}  // namespace

void ScannerLines::hear(const Message& message) noexcept {
    constexpr std::string_view kLead = "STDOUT data: [";
    also_.hear(message);
    std::string_view text = message.text;
    if (!text.starts_with(kLead) || !text.ends_with(']') || lines_.size() == kMost) return;
    text = text.substr(kLead.size(), text.size() - kLead.size() - 1);
    try {
        lines_.emplace_back(text);
    } catch (const std::bad_alloc&) {
        // A line that cannot be kept must not end the evaluation.
        return;
    }
}

}  // namespace zavcli
