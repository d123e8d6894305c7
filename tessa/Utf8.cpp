#include "tessa/Utf8.h"

#include <cstdint>
#include <cstring>

namespace tessa {

namespace {

static_assert(sizeof(wchar_t) == 4, "a wide character holds any code point");

struct Block16 {
    static constexpr std::size_t kSize = 16;
    using Bytes = std::uint8_t __attribute__((vector_size(16)));
    using Wides = std::uint32_t __attribute__((vector_size(64)));
};

struct Block8 {
    static constexpr std::size_t kSize = 8;
    using Bytes = std::uint8_t __attribute__((vector_size(8)));
    using Wides = std::uint32_t __attribute__((vector_size(32)));
};

// Converts a block of ASCII characters in a few instructions. False, with nothing written, if the block is not ASCII.
template <class Block>
bool widenAscii(const char* utf8, wchar_t* out) {
    std::uint64_t words[Block::kSize / sizeof(std::uint64_t)];
    std::memcpy(words, utf8, sizeof words);
    std::uint64_t all = 0;
    for (const std::uint64_t word : words) all |= word;
    if ((all & 0x8080808080808080U) != 0) return false;
    typename Block::Bytes bytes;
    std::memcpy(&bytes, utf8, sizeof bytes);
    const auto wides = __builtin_convertvector(bytes, typename Block::Wides);
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
        const auto left = static_cast<std::size_t>(end - utf8);
        if (left >= 16 && widenAscii<Block16>(utf8, out)) {
            utf8 += 16;
            out += 16;
        } else if (left >= 8 && widenAscii<Block8>(utf8, out)) {
            utf8 += 8;
            out += 8;
        } else {
            // Converts up to eight bytes one by one before trying a whole block again.
            const char* const stop = left > 8 ? utf8 + 8 : end;
            while (utf8 < stop) *out++ = codePoint(utf8);
        }
    }
    return out;
}

std::wstring widened(std::string_view utf8) {
    std::wstring wide(utf8.size(), L'\0');
    wide.resize(static_cast<std::size_t>(widenUtf8(utf8.data(), utf8.size(), wide.data()) - wide.data()));
    return wide;
}

char* narrowUtf8(wchar_t codePoint, char* out) {
    const std::uint32_t code = static_cast<char32_t>(codePoint);
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
