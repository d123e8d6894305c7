#include "toolkit/quorvis/evaluation/ScanMessage.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxTexts = 5;
constexpr std::size_t kMaxReadBytes = std::size_t{1} << 20;  // kept before they are erased
constexpr std::uint64_t kOfFile = 1U << 16U;                 // added to the code of an event
constexpr unsigned kCountShift = 17;                         // the count of an event is above
constexpr std::uint64_t kMaxCount = ~std::uint64_t{0} >> kCountShift;

void appendNumber(std::string& bytes, std::uint64_t number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

std::optional<std::uint64_t> takeNumber(std::string_view& bytes) {
    std::uint64_t number = 0;
    if (bytes.size() < sizeof number) return std::nullopt;
    std::memcpy(&number, bytes.data(), sizeof number);
    bytes.remove_prefix(sizeof number);
    return number;
}

// False when the bytes are not a message.
bool decode(std::string_view bytes, ScanMessage& message) {
    const std::optional<std::uint64_t> kind = takeNumber(bytes);
    const std::optional<std::uint64_t> number = takeNumber(bytes);
    if (!number || *kind > static_cast<std::uint64_t>(ScanMessage::Kind::Done)) return false;
    message = {static_cast<ScanMessage::Kind>(*kind), *number, {}};
    while (!bytes.empty()) {
        const std::optional<std::uint64_t> length = takeNumber(bytes);
        if (!length || *length > bytes.size() || message.texts.size() == kMaxTexts) return false;
        message.texts.emplace_back(bytes.substr(0, *length));
        bytes.remove_prefix(*length);
    }
    const bool isEvent = message.kind == ScanMessage::Kind::Event;
    const bool hasText =
        !isEvent && message.kind != ScanMessage::Kind::Signatures && message.kind != ScanMessage::Kind::Done;
    if (isEvent && (*number & (kOfFile - 1)) > static_cast<std::uint64_t>(EventCode::Invalid)) return false;
    return message.texts.size() == (isEvent ? kMaxTexts : hasText ? 1U : 0U);
}

}  // namespace

ScanMessage messageOf(Event event) {
    return {ScanMessage::Kind::Event,
            static_cast<std::uint64_t>(event.code) | (event.ofFile ? kOfFile : 0) |
                std::min(event.count, kMaxCount) << kCountShift,
            {std::move(event.path), std::move(event.text), std::move(event.guid), std::move(event.leaf),
             std::move(event.because)}};
}

Event eventOf(ScanMessage message) {
    return {static_cast<EventCode>(message.number & (kOfFile - 1)),
            std::move(message.texts.at(0)),
            std::move(message.texts.at(1)),
            std::move(message.texts.at(2)),
            std::move(message.texts.at(3)),
            (message.number & kOfFile) != 0,
            message.number >> kCountShift,
            std::move(message.texts.at(4))};
}

std::string encoded(const ScanMessage& message) {
    std::string bytes;
    appendNumber(bytes, 0);  // placeholder for the length
    appendNumber(bytes, static_cast<std::uint64_t>(message.kind));
    appendNumber(bytes, message.number);
    for (const std::string& text : message.texts) {
        appendNumber(bytes, text.size());
        bytes.append(text);
    }
    const std::uint64_t length = bytes.size() - sizeof length;
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes;
}

ScanMessageReader::Next ScanMessageReader::next(ScanMessage& message) {
    std::string_view rest = std::string_view(bytes_).substr(read_);
    const std::optional<std::uint64_t> length = takeNumber(rest);
    if (length && *length > kMaxBytes) return Next::Broken;
    if (!length || rest.size() < *length) {
        bytes_.erase(0, std::exchange(read_, 0));
        return Next::Incomplete;
    }
    if (!decode(rest.substr(0, *length), message)) return Next::Broken;
    read_ += sizeof *length + *length;
    if (read_ >= kMaxReadBytes) bytes_.erase(0, std::exchange(read_, 0));
    return Next::Message;
}

std::unique_ptr<WorkerOutput, UnmapOutput> makeSharedOutput() {
    void* const memory =
        ::mmap(nullptr, sizeof(WorkerOutput), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    return std::unique_ptr<WorkerOutput, UnmapOutput>(new (memory) WorkerOutput);
}

void UnmapOutput::operator()(WorkerOutput* output) const {
    ::munmap(output, sizeof *output);
}

std::string bytesLeftIn(const WorkerOutput& output, std::uint64_t received) {
    // Bytes that are in the output although they came through the pipe: the worker may die before it counts them as sent.
    const std::uint64_t twice = received - std::min<std::uint64_t>(output.sent, received);
    const std::size_t used = std::min<std::size_t>(output.used, output.bytes.size());
    return twice < used ? std::string(output.bytes.data() + twice, used - twice) : std::string();
}

}  // namespace toolkit::quorvis
