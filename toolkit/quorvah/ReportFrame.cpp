#include "toolkit/quorvah/ReportFrame.h"

#include <cstdint>
#include <cstring>
#include <optional>

namespace quorvah {

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

bool takeInstance(std::string_view& frame, Instance& instance) {
    for (std::string& value : instance.values()) {
        if (!takeText(frame, value)) return false;
    }
    return true;
}

}  // namespace

std::string frameOf(const Report& report) {
    std::string frame(sizeof(Length), '\0');
    append(frame, static_cast<Length>(report.elapsed().count()));
    append(frame, report.reason());
    append(frame, static_cast<Length>(report.warnings().size()));
    for (const std::string& warning : report.warnings()) append(frame, warning);
    append(frame, static_cast<Length>(report.instances().size()));
    for (const Instance& instance : report.instances()) {
        for (const std::string& value : instance.values()) append(frame, value);
    }
    const auto length = static_cast<Length>(frame.size());
    std::memcpy(frame.data(), &length, sizeof length);
    return frame;
}

std::size_t frameLength(std::string_view bytes) {
    return takeNumber(bytes).value_or(0);
}

bool readFrame(std::string_view frame, Report& report) {
    if (frameLength(frame) != frame.size() || frame.empty()) return false;
    frame.remove_prefix(sizeof(Length));
    const std::optional<Length> elapsed = takeNumber(frame);
    if (!elapsed) return false;
    report.setElapsed(std::chrono::milliseconds(*elapsed));
    std::string text;
    if (!takeText(frame, text)) return false;
    report.partial(text);
    const std::optional<Length> warnings = takeNumber(frame);
    if (!warnings) return false;
    for (Length i = 0; i < *warnings; ++i) {
        if (!takeText(frame, text)) return false;
        report.warn(text);
    }
    const std::optional<Length> instances = takeNumber(frame);
    if (!instances) return false;
    for (Length i = 0; i < *instances; ++i) {
        if (!takeInstance(frame, report.add())) return false;
    }
    return frame.empty();
}

}  // namespace quorvah
