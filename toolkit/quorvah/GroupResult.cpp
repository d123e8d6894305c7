#include "toolkit/quorvah/GroupResult.h"

#include <cstdint>
#include <cstring>
#include <optional>

namespace toolkit::quorvah {

namespace {

using Length = std::uint32_t;

void append(std::string& frame, Length number) {
    frame.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void append(std::string& frame, std::string_view text) {
    append(frame, static_cast<Length>(text.size()));
    frame.append(text);
}

std::optional<Length> takeNumber(std::string_view& frame) {
    Length number = 0;
    if (frame.size() < sizeof number) return std::nullopt;
    std::memcpy(&number, frame.data(), sizeof number);
    frame.remove_prefix(sizeof number);
    return number;
}

bool takeText(std::string_view& frame, std::string& text) {
    const std::optional<Length> length = takeNumber(frame);
    if (!length || *length > frame.size()) return false;
    text = frame.substr(0, *length);
    frame.remove_prefix(*length);
    return true;
}

bool takeWarnings(std::string_view& frame, std::vector<std::string>& warnings) {
    const std::optional<Length> count = takeNumber(frame);
    if (!count) return false;
    for (Length i = 0; i < *count; ++i) {
        if (!takeText(frame, warnings.emplace_back())) return false;
    }
    return true;
}

}  // namespace

std::string frameHead(const GroupResult& result) {
    std::string head(sizeof(Length), '\0');
    append(head, result.reason);
    append(head, static_cast<Length>(result.elapsed.count()));
    append(head, static_cast<Length>(result.warnings.size()));
    for (const std::string& warning : result.warnings) append(head, warning);
    append(head, static_cast<Length>(result.instances));
    append(head, static_cast<Length>(result.xml.size()));
    const auto length = static_cast<Length>(head.size() + result.xml.size());
    std::memcpy(head.data(), &length, sizeof length);
    return head;
}

std::size_t frameLength(std::string_view bytes) {
    return takeNumber(bytes).value_or(0);
}

bool readFrame(std::string&& frame, GroupResult& result) {
    if (frameLength(frame) != frame.size() || frame.empty()) return false;
    std::string_view rest = frame;
    rest.remove_prefix(sizeof(Length));
    if (!takeText(rest, result.reason)) return false;
    const std::optional<Length> elapsed = takeNumber(rest);
    if (!elapsed || !takeWarnings(rest, result.warnings)) return false;
    const std::optional<Length> instances = takeNumber(rest);
    const std::optional<Length> size = takeNumber(rest);
    if (!instances || size != rest.size()) return false;
    result.elapsed = std::chrono::milliseconds(*elapsed);
    result.instances = *instances;
    // The frame's own memory goes on to hold the xml, which may be large.
    frame.erase(0, frame.size() - rest.size());
    result.xml = std::move(frame);
    return true;
}

}  // namespace toolkit::quorvah
