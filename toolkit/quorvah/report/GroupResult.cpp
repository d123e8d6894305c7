#include "toolkit/quorvah/report/GroupResult.h"

#include <cstring>
#include <optional>

namespace toolkit::quorvah {

namespace {

void append(std::string& frame, std::uint64_t number) {
    frame.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void append(std::string& frame, std::string_view text) {
    append(frame, text.size());
    frame.append(text);
}

std::optional<std::uint64_t> takeNumber(std::string_view& frame) {
    std::uint64_t number = 0;
    if (frame.size() < sizeof number) return std::nullopt;
    std::memcpy(&number, frame.data(), sizeof number);
    frame.remove_prefix(sizeof number);
    return number;
}

bool takeText(std::string_view& frame, std::string& text) {
    const std::optional<std::uint64_t> length = takeNumber(frame);
    if (!length || *length > frame.size()) return false;
    text = frame.substr(0, *length);
    frame.remove_prefix(*length);
    return true;
}

bool takeState(std::string_view& frame, GroupState& state) {
    const std::optional<std::uint64_t> number = takeNumber(frame);
    if (!number || *number > static_cast<std::uint64_t>(GroupState::Unread)) return false;
    state = static_cast<GroupState>(*number);
    return true;
}

bool takeWarnings(std::string_view& frame, std::vector<std::string>& warnings) {
    const std::optional<std::uint64_t> count = takeNumber(frame);
    if (!count) return false;
    for (std::uint64_t i = 0; i < *count; ++i) {
        if (!takeText(frame, warnings.emplace_back())) return false;
    }
    return true;
}

}  // namespace

GroupResult resultWithoutXml(const GroupData& data) {
    GroupResult result;
    result.group = &data.group();
    result.instances = data.instances().size();
    result.state = data.state();
    result.reason = data.reason();
    result.warnings = data.warnings();
    result.elapsed = data.elapsed();
    return result;
}

GroupResult unreadResult(std::string_view reason, std::chrono::steady_clock::duration elapsed) {
    GroupResult result;
    result.state = GroupState::Unread;
    result.reason = reason;
    result.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(elapsed);
    return result;
}

std::string toFrame(const GroupResult& result, std::uint64_t xmlAt) {
    std::string frame(sizeof(std::uint64_t), '\0');
    append(frame, static_cast<std::uint64_t>(result.state));
    append(frame, result.reason);
    append(frame, static_cast<std::uint64_t>(result.elapsed.count()));
    append(frame, result.warnings.size());
    for (const std::string& warning : result.warnings) append(frame, warning);
    append(frame, result.instances);
    append(frame, xmlAt);
    append(frame, result.xml.size());
    const std::uint64_t length = frame.size();
    std::memcpy(frame.data(), &length, sizeof length);
    return frame;
}

std::size_t frameLength(std::string_view bytes) {
    return takeNumber(bytes).value_or(0);
}

bool readFrame(std::string_view frame, const SharedBuffer& texts, GroupResult& result) {
    if (frameLength(frame) != frame.size()) return false;
    if (!takeNumber(frame) || !takeState(frame, result.state) || !takeText(frame, result.reason))
        return false;
    const std::optional<std::uint64_t> elapsed = takeNumber(frame);
    if (!elapsed || !takeWarnings(frame, result.warnings)) return false;
    const std::optional<std::uint64_t> instances = takeNumber(frame);
    const std::optional<std::uint64_t> xmlAt = takeNumber(frame);
    const std::optional<std::uint64_t> size = takeNumber(frame);
    if (!size || !frame.empty()) return false;
    result.elapsed = std::chrono::milliseconds(*elapsed);
    result.instances = *instances;
    result.memory = texts.at(*xmlAt, *size);
    result.xml = {static_cast<const char*>(result.memory.get()), result.memory ? *size : 0};
    return result.memory != nullptr || *size == 0;
}

}  // namespace toolkit::quorvah
