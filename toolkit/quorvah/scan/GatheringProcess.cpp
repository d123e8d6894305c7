#include "toolkit/quorvah/scan/GatheringProcess.h"

#include <unistd.h>

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

// Of a group whose instances do not fit into memory.
GroupResult outOfMemory() {
    GroupResult result;
    result.state = GroupState::Unread;
    result.reason = "memory";
    return result;
}

// Gathers a group and sends its result. Returns whether the result could be sent.
bool gatherAndSend(const Group& group, GatheringContext& context, const Prepare& prepare, int pipe,
                   SharedBuffer& xml, Clock::time_point deadline) {
    try {
        GroupData data(group);
        gatherGroup(context, data, prepare, deadline);
        const GroupResult result = render(data, context.options().pretty);
        const std::optional<std::uint64_t> place = xml.append(result.xml);
        return place && writeAll(pipe, toFrame(result, *place));
    } catch (const std::bad_alloc&) {
        context.limitTime({});
    }
    return writeAll(pipe, toFrame(outOfMemory(), xml.append({}).value_or(0)));
}

// Writes the length of a text and the text.
bool writeText(int pipe, const std::string& text) {
    const std::uint64_t length = text.size();
    return writeAll(pipe, {reinterpret_cast<const char*>(&length), sizeof length}) && writeAll(pipe, text);
}

// Runs in the child. Returns when it cannot go on.
void gatherAndSendAll(GatheringContext& context, std::span<const Group* const> groups, const Prepare& prepare,
                      int pipe, SharedBuffer& xml, const GatheringProcess::Deadline& deadline) {
    const std::string missing = enterGatheringSandbox();
    if (!writeText(pipe, missing)) return;
    if (!missing.empty() && !context.options().sandboxOptional) return;
    for (const Group* const group : groups) {
        if (!gatherAndSend(*group, context, prepare, pipe, xml, deadline())) return;
    }
    ::_exit(0);
}

}  // namespace

GatheringProcess::GatheringProcess(GatheringContext& context, std::span<const Group* const> groups,
                                   const Prepare& prepare, const Deadline& deadline)
    : child_([&](int pipe) { gatherAndSendAll(context, groups, prepare, pipe, xml_, deadline); }) {}

std::string GatheringProcess::missingFromSandbox(Clock::time_point deadline) {
    std::uint64_t length = 0;
    std::string text;
    if (receiveAtLeast(sizeof length, deadline)) {
        std::memcpy(&length, received_.data(), sizeof length);
        if (receiveAtLeast(sizeof length + length, deadline)) {
            text = received_.substr(sizeof length, length);
            received_.erase(0, sizeof length + length);
            return text;
        }
    }
    child_.kill();  // next() reports this
    received_.clear();
    return text;
}

const char* GatheringProcess::next(Clock::time_point deadline, GroupResult& result) {
    for (;;) {
        const std::size_t length = frameLength(received_);
        if (length > 0 && received_.size() >= length) {
            const bool read = readFrame(std::string_view(received_).substr(0, length), xml_, result);
            received_.erase(0, length);
            return read ? nullptr : "failed";
        }
        if (!child_.waitForInput(deadline)) return "timeout";
        if (!receive()) return "failed";
    }
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
