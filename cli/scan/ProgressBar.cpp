#include "cli/scan/ProgressBar.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <system_error>

#include "cli/scan/ScannerOutput.h"
#include "cli/system/SignalCleanup.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

constexpr int kMaxBarColumns = 40;
constexpr int kMaxLabelColumns = 22;
constexpr int kWhole = 100;  // percent

std::string barWith(int done, int total, const std::string& tail, int columns) {
    const int width = std::clamp(columns - columnsOf(tail) - 2, 1, kMaxBarColumns);
    const int filled = total > 0 ? width * done / total : 0;
    const std::string bar = fmt::format("[{:#<{}}{: <{}}]", "", filled, "", width - filled);
    return clip(bar + tail, std::max(1, columns));
}

}  // namespace

// A scanner reports each group by a line such as "group Processor: 1 instances, 0 ms", which may end in a remark.
std::optional<std::string> finishedGroup(const LogMessage& message) {
    constexpr std::string_view kLead = "group ";
    const std::optional<std::string_view> line = scannerLine(message);
    if (message.function != "ZAV_hw_run" || !line || !line->starts_with(kLead)) return std::nullopt;
    const std::string_view text = line->substr(kLead.size());
    const std::size_t colon = text.find(": ");
    if (colon == std::string_view::npos || colon == 0) return std::nullopt;
    const std::size_t counted = text.find(" instance", colon);
    if (counted == std::string_view::npos || text.find(" ms", counted) == std::string_view::npos)
        return std::nullopt;
    return std::string(text.substr(0, colon));
}

std::optional<int> evaluatedPercent(const LogMessage& message) {
    constexpr std::string_view kLead = "progress: ";
    constexpr std::string_view kEnd = " percent";
    const std::optional<std::string_view> line = scannerLine(message);
    if (message.function != "SW_ExecuteScanner()" || !line || !line->starts_with(kLead) ||
        !line->ends_with(kEnd) || line->size() < kLead.size() + kEnd.size())
        return std::nullopt;
    const char* const end = line->data() + line->size() - kEnd.size();
    int percent = 0;
    const auto [stop, error] = std::from_chars(line->data() + kLead.size(), end, percent);
    const bool valid = error == std::errc() && stop == end && percent >= 0 && percent <= kWhole;
    return valid ? std::optional(percent) : std::nullopt;
}

std::string progressBar(int done, int total, std::string_view label, int columns) {
    return barWith(done, total,
                   fmt::format(" {}/{} {}", done, total, clip(printable(label), kMaxLabelColumns)), columns);
}

std::string percentBar(int percent, int columns) {
    return barWith(percent, kWhole, fmt::format(" {} %", percent), columns);
}

void ProgressBar::begin(int total) {
    percent_ = false;
    total_ = total;
    done_ = 0;
    label_.clear();
    show();
}

void ProgressBar::beginPercent() {
    begin(0);
    percent_ = true;
    total_ = kWhole;
    show();
}

void ProgressBar::onMessage(const LogMessage& message) {
    if (!enabled_ || total_ == 0) return;
    if (const std::optional<std::string> group = finishedGroup(message)) {
        done_ = std::min(done_ + 1, total_);
        label_ = *group;
    } else if (const std::optional<int> percent = evaluatedPercent(message); percent && *percent > done_) {
        done_ = *percent;
    } else {
        return;
    }
    show();
}

void ProgressBar::hide() {
    if (!shown_) return;
    writeStandardError("\r\x1b[K");
    shown_ = false;
    registerProgressLine(false);
}

void ProgressBar::show() {
    if (!enabled_ || total_ == 0) return;
    // The last column stays free, because some terminals wrap when it is written.
    const int columns = terminalColumns(STDERR_FILENO) - 1;
    const std::string bar =
        percent_ ? percentBar(done_, columns) : progressBar(done_, total_, label_, columns);
    writeStandardError(fmt::format("\r\x1b[K{}", bar));
    shown_ = true;
    registerProgressLine(true);
}

void ProgressBar::end() {
    hide();
    total_ = 0;
}

}  // namespace zavcli
