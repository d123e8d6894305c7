#include "cli/scan/ScannerOutput.h"

#include <new>

namespace zavcli {

namespace {

constexpr std::size_t kMaxLines = 1000;

}  // namespace

std::optional<std::string_view> scannerLine(const LogMessage& message) {
    constexpr std::string_view kLead = "STDOUT data: [";
    std::string_view text = message.text;
    if (!text.starts_with(kLead) || !text.ends_with(']')) return std::nullopt;
    return text.substr(kLead.size(), text.size() - kLead.size() - 1);
}

void ScannerOutput::onMessage(const LogMessage& message) noexcept {
    next_.onMessage(message);
    const std::optional<std::string_view> line = scannerLine(message);
    if (!line || lines_.size() == kMaxLines) return;
    try {
        lines_.emplace_back(*line);
    } catch (const std::bad_alloc&) {
        // Losing a line must not end the evaluation.
        return;
    }
}

}  // namespace zavcli
