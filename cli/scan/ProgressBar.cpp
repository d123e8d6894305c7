#include "cli/scan/ProgressBar.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "cli/scan/ScannerOutput.h"
#include "cli/system/SignalCleanup.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"
#include "cli/terminal/Terminal.h"

namespace zavcli {

namespace {

constexpr int kMaxBarColumns = 40;
constexpr int kMaxNameColumns = 22;

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

std::string progressBar(int done, int total, std::string_view group, int columns) {
    const std::string tail = fmt::format(" {}/{} {}", done, total, clip(printable(group), kMaxNameColumns));
    const int width = std::clamp(columns - columnsOf(tail) - 2, 1, kMaxBarColumns);
    const int filled = total > 0 ? width * done / total : 0;
    const std::string bar = fmt::format("[{:#<{}}{: <{}}]", "", filled, "", width - filled);
    return clip(bar + tail, std::max(1, columns));
}

void ProgressBar::begin(int total) {
    total_ = total;
    done_ = 0;
    group_.clear();
    show();
}

void ProgressBar::onMessage(const LogMessage& message) {
    if (!enabled_ || total_ == 0) return;
    const std::optional<std::string> group = finishedGroup(message);
    if (!group) return;
    done_ = std::min(done_ + 1, total_);
    group_ = *group;
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
    writeStandardError(fmt::format("\r\x1b[K{}", progressBar(done_, total_, group_, columns)));
    shown_ = true;
    registerProgressLine(true);
}

void ProgressBar::end() {
    hide();
    total_ = 0;
}

}  // namespace zavcli
