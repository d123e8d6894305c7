#include "toolkit/quorvah/scan/GatheringProcess.h"

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>

#include "toolkit/machine/files/WriteAll.h"
#include "toolkit/quorvah/report/OutputDocument.h"
#include "toolkit/quorvah/scan/GatheringSandbox.h"

namespace toolkit::quorvah {

namespace {

using Clock = GatheringProcess::Clock;

constexpr std::size_t kMaxFrame = std::size_t{16} << 20;  // instances are not in frames

// Gathers a group. Returns its frame.
std::string gather(const Group& group, GatheringContext& context, const Prepare& prepare, SharedBuffer& xml,
                   Clock::time_point deadline) {
    try {
        GroupData data(group);
        gatherGroup(context, data, prepare, deadline);
        const GroupResult result = render(data, context.options().pretty);
        const std::optional<std::uint64_t> place = xml.append(result.xml);
        return toFrame(place ? result : unreadResult("memory", {}), place.value_or(0));
    } catch (const std::bad_alloc&) {
        context.limitTime({});
    }
    return toFrame(unreadResult("memory", {}), xml.append({}).value_or(0));
}

// The frame that tells which group comes next: its length and the number. Nothing if there is none.
constexpr std::size_t kStartLength = 2 * sizeof(std::uint64_t);
std::string startFrame(std::optional<std::size_t> group) {
    if (!group) return {};
    const std::array<std::uint64_t, 2> frame = {kStartLength, *group};
    return {reinterpret_cast<const char*>(frame.data()), sizeof frame};
}

// Writes the length of a text and the text.
bool writeText(int pipe, const std::string& text) {
    const std::uint64_t length = text.size();
    return writeAll(pipe, {reinterpret_cast<const char*>(&length), sizeof length}) && writeAll(pipe, text);
}

// Runs in the child. Returns when it cannot go on.
void gatherAndSendAll(GatheringContext& context, std::span<const Group* const> groups, GroupQueue& queue,
                      const Prepare& prepare, int pipe, SharedBuffer& xml,
                      const GatheringProcess::Deadline& deadline) {
    const std::string missing = enterGatheringSandbox();
    if (!writeText(pipe, missing)) return;
    if (!missing.empty() && !context.options().sandboxOptional) return;
    std::optional<std::size_t> group = queue.take();
    if (!writeAll(pipe, startFrame(group))) return;
    while (group) {
        std::string frames = gather(*groups[*group], context, prepare, xml, deadline());
        group = queue.take();
        if (!writeAll(pipe, frames.append(startFrame(group)))) return;
    }
    ::_exit(0);
}

}  // namespace

GatheringProcess::GatheringProcess(GatheringContext& context, std::span<const Group* const> groups,
                                   GroupQueue& queue, const Prepare& prepare, const Deadline& deadline)
    : groups_(groups.size()),
      child_([&](int pipe) { gatherAndSendAll(context, groups, queue, prepare, pipe, xml_, deadline); }) {}

std::optional<std::string> GatheringProcess::missingFromSandbox(Clock::time_point deadline) {
    std::uint64_t length = 0;
    if (!receiveAtLeast(sizeof length, deadline)) return std::nullopt;
    std::memcpy(&length, received_.data(), sizeof length);
    if (length > kMaxFrame || !receiveAtLeast(sizeof length + length, deadline)) return std::nullopt;
    std::string text = received_.substr(sizeof length, length);
    received_.erase(0, sizeof length + length);
    return text;
}

GatheringProcess::Event GatheringProcess::next(std::size_t& group, GroupResult& result) {
    for (;;) {
        const std::size_t length = frameLength(received_);
        if (length > kMaxFrame) return Event::Ended;
        if (length > 0 && received_.size() >= length) {
            const Event event = take(std::string_view(received_).substr(0, length), group, result);
            received_.erase(0, length);
            if (event != Event::None) return event;
        } else if (!child_.waitForInput(Clock::now())) {
            return Event::None;
        } else if (!receive()) {
            return Event::Ended;
        }
    }
}

// Reads one frame. A group that starts is no event.
GatheringProcess::Event GatheringProcess::take(std::string_view frame, std::size_t& group,
                                               GroupResult& result) {
    if (frame.size() == kStartLength) {
        std::uint64_t number = 0;
        std::memcpy(&number, frame.data() + sizeof number, sizeof number);
        if (current_ || number >= groups_) return Event::Ended;
        current_ = Current{number, Clock::now()};
        begun_ = true;
        return Event::None;
    }
    if (!current_ || !readFrame(frame, xml_, result)) return Event::Ended;
    group = current_->group;
    current_.reset();
    return Event::Finished;
}

void GatheringProcess::join(Clock::time_point deadline) {
    while (child_.waitForInput(deadline)) {
        if (receive()) continue;
        child_.join();
        return;
    }
}

// Returns false when the child has ended.
bool GatheringProcess::receive() {
    const std::string_view bytes = child_.receive();
    received_ += bytes;
    return !bytes.empty();
}

// Waits until the received bytes have at least this size. Returns false when they do not.
bool GatheringProcess::receiveAtLeast(std::size_t size, Clock::time_point deadline) {
    while (received_.size() < size) {
        if (!child_.waitForInput(deadline) || !receive()) return false;
    }
    return true;
}

}  // namespace toolkit::quorvah
