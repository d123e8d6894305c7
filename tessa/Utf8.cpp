#include "tessa/Utf8.h"

#include <cstdint>
#include <cstring>

namespace tessa {

namespace {

static_assert(sizeof(wchar_t) == 4, "a wide character holds any code point");

constexpr std::size_t kBlock = 16;
using Bytes = std::uint8_t __attribute__((vector_size(kBlock)));
using Words = std::uint64_t __attribute__((vector_size(kBlock)));
using Wides = std::uint32_t __attribute__((vector_size(kBlock * sizeof(wchar_t))));

// Most text is ASCII: sixteen characters in a few instructions. False, with nothing written, when one of them
// is not.
bool widenAscii(const char* utf8, wchar_t* out) {
    Bytes bytes;
    std::memcpy(&bytes, utf8, kBlock);
    Words words;
    std::memcpy(&words, utf8, kBlock);
    if (((words[0] | words[1]) & 0x8080808080808080U) != 0) return false;
    const Wides wides = __builtin_convertvector(bytes, Wides);
    std::memcpy(out, &wides, sizeof wides);
    return true;
}

std::uint32_t continuation(const char*& next) {
    return static_cast<unsigned char>(*next++) & 0x3FU;
}

wchar_t codePoint(const char*& next) {
    const auto lead = static_cast<unsigned char>(*next++);
    if (lead < 0x80) return static_cast<wchar_t>(lead);
    if (lead < 0xE0) return static_cast<wchar_t>(((lead & 0x1FU) << 6U) | continuation(next));
    if (lead < 0xF0) {
        const std::uint32_t high = (lead & 0x0FU) << 12U;
        const std::uint32_t middle = continuation(next) << 6U;
        return static_cast<wchar_t>(high | middle | continuation(next));
    }
    const std::uint32_t high = (lead & 0x07U) << 18U;
    const std::uint32_t upper = continuation(next) << 12U;
    const std::uint32_t middle = continuation(next) << 6U;
    return static_cast<wchar_t>(high | upper | middle | continuation(next));
}

}  // namespace

wchar_t* widenUtf8(const char* utf8, std::size_t length, wchar_t* out) {
    const char* const end = utf8 + length;
    while (utf8 != end) {
        while (static_cast<std::size_t>(end - utf8) >= kBlock && widenAscii(utf8, out)) {
            utf8 += kBlock;
            out += kBlock;
        }
        // Up to a block one by one, then try the quick way again.
        const char* const stop = static_cast<std::size_t>(end - utf8) > kBlock ? utf8 + kBlock : end;
        while (utf8 < stop) *out++ = codePoint(utf8);
    }
    return out;
}

char* narrowUtf8(wchar_t codePoint, char* out) {
    const auto code = static_cast<std::uint32_t>(codePoint);
    const auto put = [&out](std::uint32_t byte) { *out++ = static_cast<char>(byte); };
    const auto putContinuation = [&put, code](unsigned shift) { put(0x80U | ((code >> shift) & 0x3FU)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0U | (code >> 6U));
        putContinuation(0);
    } else if (code < 0x10000) {
        put(0xE0U | (code >> 12U));
        putContinuation(6);
        putContinuation(0);
    } else {
        put(0xF0U | (code >> 18U));
        putContinuation(12);
        putContinuation(6);
        putContinuation(0);
    }
    return out;
}

}  // namespace tessa
