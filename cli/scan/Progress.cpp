#include "cli/scan/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "cli/system/Ending.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

constexpr int kWidestBar = 40;
constexpr int kNameColumns = 22;

}  // namespace

std::optional<std::string> finishedGroup(const Message& message) {
    constexpr std::string_view kLead = "STDOUT data: [group ";
    std::string_view text = message.text;
    if (message.function != "ZAV_hw_run" || !text.starts_with(kLead) || !text.ends_with(']'))
        return std::nullopt;
    text.remove_prefix(kLead.size());
    const std::size_t colon = text.find(": ");
    if (colon == std::string_view::npos || colon == 0) return std::nullopt;
    // Behind the time there may be a word on what went wrong.
    const std::size_t counted = text.find(" instance", colon);
    if (counted == std::string_view::npos || text.find(" ms", counted) == std::string_view::npos)
        return std::nullopt;
    return std::string(text.substr(0, colon));
}

std::string progressBar(int done, int total, std::string_view group, int columns) {
    const std::string tail = fmt::format(" {}/{} {}", done, total, clip(printable(group), kNameColumns));
    const int width = std::clamp(columns - columnsOf(tail) - 2, 1, kWidestBar);
    const int filled = total > 0 ? width * done / total : 0;
    const std::string bar = fmt::format("[{:#<{}}{: <{}}]", "", filled, "", width - filled);
    return clip(bar + tail, std::max(1, columns));
}

void Progress::begin(int total) {
    total_ = total;
    done_ = 0;
    group_.clear();
    show();
}

void Progress::hear(const Message& message) {
    if (!enabled_ || total_ == 0) return;
    const std::optional<std::string> group = finishedGroup(message);
    if (!group) return;
    done_ = std::min(done_ + 1, total_);
    group_ = *group;
    show();
}

void Progress::hide() {
    if (!shown_) return;
    writeStandardError("\r\x1b[K");
    shown_ = false;
    noteLineShown(false);
}

void Progress::show() {
    if (!enabled_ || total_ == 0) return;
    // One column less than there are: a full last column makes some terminals wrap.
    const int columns = columnsFor(STDERR_FILENO) - 1;
    writeStandardError(fmt::format("\r\x1b[K{}", progressBar(done_, total_, group_, columns)));
    shown_ = true;
    noteLineShown(true);
}

void Progress::end() {
    hide();
    total_ = 0;
}

}  // namespace zavcli
