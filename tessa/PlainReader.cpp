#include "tessa/PlainReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

#include "kest/Ascii.h"
#include "tessa/Utf8.h"

namespace tessa {

namespace {

// A tag must fit into the buffer.
constexpr std::size_t kBufferSize = std::size_t{64} << 10;
// The zeros behind the last byte: they end every scan, and vectors may be loaded across them.
constexpr std::size_t kPadding = 16;
// More attributes are not compared with each other here.
constexpr std::size_t kMaxAttributes = 32;

// What became of a piece of the document.
enum class Outcome { kRead, kIncomplete, kNotPlain };

bool isBlank(char byte) {
    return byte == ' ' || byte == '\n' || byte == '\t';
}

constexpr std::array<bool, 256> nameBytes(std::string_view others) {
    std::array<bool, 256> bytes{};
    for (std::size_t letter = 0; letter < 26; ++letter) bytes['a' + letter] = bytes['A' + letter] = true;
    for (const char other : others) bytes[static_cast<unsigned char>(other)] = true;
    return bytes;
}
constexpr std::array<bool, 256> kNameStart = nameBytes("_:");
constexpr std::array<bool, 256> kNameByte = nameBytes("_:.-0123456789");

bool isIn(const std::array<bool, 256>& bytes, char byte) {
    return bytes[static_cast<unsigned char>(byte)];
}

// The first byte from `next` on that is one of the stops, below the blank, or beyond ASCII. The padding has such bytes.
template <char... Stops>
const char* findSpecial(const char* next) {
#if defined(__SSE2__)
    for (;; next += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(next));
        __m128i special = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));  // signed, so beyond ASCII is below
        ((special = _mm_or_si128(special, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(Stops)))), ...);
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(special));
        if (mask != 0) return next + std::countr_zero(mask);
    }
#elif defined(__aarch64__)
    for (;; next += 16) {
        const int8x16_t bytes = vld1q_s8(reinterpret_cast<const std::int8_t*>(next));
        uint8x16_t special = vcltq_s8(bytes, vdupq_n_s8(' '));
        ((special = vorrq_u8(special, vceqq_s8(bytes, vdupq_n_s8(Stops)))), ...);
        const uint8x8_t halves = vshrn_n_u16(vreinterpretq_u16_u8(special), 4);  // four bits for each byte
        const std::uint64_t mask = vget_lane_u64(vreinterpret_u64_u8(halves), 0);
        if (mask != 0) return next + std::countr_zero(mask) / 4;
    }
#else
    while (static_cast<signed char>(*next) >= ' ' && ((*next != Stops) && ...)) ++next;
    return next;
#endif
}

// The length of the character that begins with these bytes, of which there are at least four: 0 if it is not valid
// UTF-8 or not allowed in XML.
std::size_t characterLength(const char* bytes) {
    const auto at = [bytes](int i) { return static_cast<unsigned char>(bytes[i]); };
    const auto continues = [at](int i) { return (at(i) & 0xC0U) == 0x80; };
    if (at(0) < 0xC2) return 0;
    if (at(0) < 0xE0) return continues(1) ? 2 : 0;
    if (at(0) < 0xF0) {
        const bool overlong = at(0) == 0xE0 && at(1) < 0xA0;
        const bool surrogate = at(0) == 0xED && at(1) > 0x9F;
        const bool noncharacter = at(0) == 0xEF && at(1) == 0xBF && at(2) > 0xBD;
        return continues(1) && continues(2) && !overlong && !surrogate && !noncharacter ? 3 : 0;
    }
    const bool overlong = at(0) == 0xF0 && at(1) < 0x90;
    const bool beyond = at(0) > 0xF4 || (at(0) == 0xF4 && at(1) > 0x8F);
    return continues(1) && continues(2) && continues(3) && !overlong && !beyond ? 4 : 0;
}

bool isAllowed(std::uint32_t code) {
    if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
    return code < 0xD800 || (code > 0xDFFF && code < 0xFFFE) || (code > 0xFFFF && code <= 0x10FFFF);
}

class PlainReader {
  public:
    PlainReader(DocumentFile& file, int blockSize, PlainSink& sink)
        : file_(file),
          blockSize_(blockSize > 0 ? static_cast<std::size_t>(blockSize) : kBufferSize),
          sink_(sink) {}

    bool read() {
        Outcome outcome = Outcome::kIncomplete;
        while (outcome == Outcome::kIncomplete && fill()) {
            if (!declared_) outcome = readDeclaration();
            if (declared_) outcome = readContent();
        }
        return outcome == Outcome::kIncomplete && next_ == end_ && ended_ && depth_ == 0;
    }

  private:
    // Reads more of the file. False at its end, and if a tag does not fit into the buffer.
    bool fill() {
        const auto left = static_cast<std::size_t>(end_ - next_);
        if (left != 0) std::memmove(buffer_.get(), next_, left);
        const std::size_t wanted = std::min(blockSize_, kBufferSize - left);
        const int count = file_.read(buffer_.get() + left, static_cast<int>(wanted));
        next_ = buffer_.get();
        end_ = next_ + left + count;
        std::memset(buffer_.get() + left + count, 0, kPadding);
        return count != 0;
    }

    Outcome endOr(const char* place) const {
        return place == end_ ? Outcome::kIncomplete : Outcome::kNotPlain;
    }

    const char* skipBlanks(const char* place) const {
        while (isBlank(*place)) ++place;
        return place;
    }

    // Reads the XML declaration, or nothing if the document begins with an element.
    Outcome readDeclaration() {
        constexpr std::string_view kBegin = "<?xml";
        const std::string_view input(next_, static_cast<std::size_t>(end_ - next_));
        if (input.size() < 2) return Outcome::kIncomplete;
        if (input[0] == '<' && input[1] != '?') {
            declared_ = true;
            return Outcome::kRead;
        }
        if (input.size() <= kBegin.size()) return Outcome::kIncomplete;
        if (!input.starts_with(kBegin)) return Outcome::kNotPlain;
        const char* place = next_ + kBegin.size();
        const Outcome outcome = readAttributes(place);
        if (outcome != Outcome::kRead) return outcome;
        if (*place != '?') return endOr(place);
        if (place[1] != '>') return endOr(place + 1);
        declared_ = isPlainDeclaration() && std::find(next_, place, '&') == place;
        next_ = place + 2;
        return declared_ ? Outcome::kRead : Outcome::kNotPlain;
    }

    bool isPlainDeclaration() const {
        const auto is = [this](std::size_t index, std::string_view name) {
            return index < attributes_.size() && attributes_[index].name == name;
        };
        if (!is(0, "version") || attributes_[0].value != "1.0") return false;
        return attributes_.size() == 1 || (attributes_.size() == 2 && is(1, "encoding") &&
                                           kest::equalsIgnoringCase(attributes_[1].value, "UTF-8"));
    }

    // Reads until the buffer ends.
    Outcome readContent() {
        for (;;) {
            const Outcome outcome = *next_ == '<' ? readTag() : readText();
            if (outcome != Outcome::kRead) return outcome;
        }
    }

    Outcome readText() {
        if (depth_ == 0) {
            next_ = skipBlanks(next_);
            return *next_ == '<' ? Outcome::kRead : endOr(next_);
        }
        const char* stop = next_;
        for (;;) {
            stop = findSpecial<'<', '&', ']'>(stop);
            if (*stop == '\n' || *stop == '\t') {
                ++stop;
                continue;
            }
            if (*stop == ']') {
                if (end_ - stop < 3) break;
                if (stop[1] == ']' && stop[2] == '>') return Outcome::kNotPlain;
                ++stop;
                continue;
            }
            if (static_cast<signed char>(*stop) >= 0 || end_ - stop < 4) break;
            const std::size_t length = characterLength(stop);
            if (length == 0) return Outcome::kNotPlain;
            stop += length;
        }
        if (stop != next_ && !sink_.text({next_, static_cast<std::size_t>(stop - next_)}))
            return Outcome::kNotPlain;
        next_ = stop;
        if (*stop == '<') return Outcome::kRead;
        if (*stop == '&') return readTextReference();
        const bool cutOff = *stop == ']' || static_cast<signed char>(*stop) < 0;
        return cutOff ? Outcome::kIncomplete : endOr(stop);
    }

    Outcome readTextReference() {
        std::array<char, 4> character{};
        std::size_t length = 0;
        const Outcome outcome = readReference(next_, character.data(), length);
        if (outcome != Outcome::kRead) return outcome;
        return sink_.text({character.data(), length}) ? Outcome::kRead : Outcome::kNotPlain;
    }

    // Reads a reference to a predefined entity or to a character.
    Outcome readReference(const char*& place, char* character, std::size_t& length) const {
        static constexpr std::array<std::pair<std::string_view, char>, 5> kEntities = {
            {{"lt;", '<'}, {"gt;", '>'}, {"amp;", '&'}, {"quot;", '"'}, {"apos;", '\''}}};
        const std::string_view input(place + 1, static_cast<std::size_t>(end_ - place) - 1);
        if (input.starts_with('#')) return readCharacterReference(place, character, length);
        for (const auto& [name, value] : kEntities) {
            if (!input.starts_with(name)) continue;
            *character = value;
            length = 1;
            place += 1 + name.size();
            return Outcome::kRead;
        }
        const bool cutOff = input.size() < 5 && input.find(';') == std::string_view::npos;
        return cutOff ? Outcome::kIncomplete : Outcome::kNotPlain;
    }

    Outcome readCharacterReference(const char*& place, char* character, std::size_t& length) const {
        const char* next = place + 2;
        const bool isHex = *next == 'x';
        if (isHex) ++next;
        const char* const digits = next;
        std::uint32_t code = 0;
        for (;; ++next) {
            const int digit = kest::hexDigit(*next);
            if (digit < 0 || (!isHex && digit > 9)) break;
            code = code * (isHex ? 16U : 10U) + static_cast<std::uint32_t>(digit);
            if (code > 0x10FFFF) return Outcome::kNotPlain;
        }
        if (*next != ';') return endOr(next);
        if (next == digits || !isAllowed(code)) return Outcome::kNotPlain;
        length = static_cast<std::size_t>(narrowUtf8(static_cast<wchar_t>(code), character) - character);
        place = next + 1;
        return Outcome::kRead;
    }

    Outcome readTag() {
        if (next_[1] == '/') return readEndTag();
        if (!isIn(kNameStart, next_[1])) return endOr(next_ + 1);
        if (depth_ == 0 && ended_) return Outcome::kNotPlain;
        const char* place = endOfName(next_ + 1);
        const std::string_view name(next_ + 1, static_cast<std::size_t>(place - next_) - 1);
        attributes_.clear();
        if (*place != '>') {
            const Outcome outcome = readAttributes(place);
            if (outcome != Outcome::kRead) return outcome;
        }
        const bool isEmpty = *place == '/';
        if (isEmpty) ++place;
        if (*place != '>') return endOr(place);
        if (!sink_.startElement(name, attributes_)) return Outcome::kNotPlain;
        ++depth_;
        next_ = place + 1;
        return isEmpty ? endElement() : Outcome::kRead;
    }

    // Names recur in the same order, so the expected one is tried first.
    const char* endOfName(const char* place) const {
        const std::string_view expected = sink_.expectedName();
        const std::string_view input(place, static_cast<std::size_t>(end_ - place));
        if (input.starts_with(expected)) place += expected.size();
        while (isIn(kNameByte, *place)) ++place;
        return place;
    }

    Outcome readEndTag() {
        if (depth_ == 0) return Outcome::kNotPlain;
        const std::string_view name = sink_.openName();
        const char* place = next_ + 2;
        const auto left = static_cast<std::size_t>(end_ - place);
        if (left <= name.size()) return Outcome::kIncomplete;
        if (std::memcmp(place, name.data(), name.size()) != 0) return Outcome::kNotPlain;
        place = skipBlanks(place + name.size());
        if (*place != '>') return endOr(place);
        next_ = place + 1;
        return endElement();
    }

    Outcome endElement() {
        --depth_;
        ended_ = true;
        return sink_.endElement() ? Outcome::kRead : Outcome::kNotPlain;
    }

    // Reads attributes, each after a blank, and the blanks behind the last one.
    Outcome readAttributes(const char*& place) {
        attributes_.clear();
        for (;;) {
            const char* const begin = skipBlanks(place);
            const bool follows = isIn(kNameStart, *begin);
            if (begin == place && follows) return Outcome::kNotPlain;
            place = begin;
            if (!follows) return place == end_ ? Outcome::kIncomplete : Outcome::kRead;
            while (isIn(kNameByte, *place)) ++place;
            const std::string_view name(begin, static_cast<std::size_t>(place - begin));
            place = skipBlanks(place);
            if (*place != '=') return endOr(place);
            place = skipBlanks(place + 1);
            if (attributes_.size() == kMaxAttributes || isTaken(name)) return Outcome::kNotPlain;
            std::string_view value;
            const Outcome outcome = readValue(place, value);
            if (outcome != Outcome::kRead) return outcome;
            attributes_.push_back({name, value});
        }
    }

    bool isTaken(std::string_view name) const {
        return std::ranges::any_of(attributes_, [name](const auto& other) { return other.name == name; });
    }

    Outcome readValue(const char*& place, std::string_view& value) {
        if (*place == '"') return readQuoted<'"'>(place, value);
        if (*place == '\'') return readQuoted<'\''>(place, value);
        return endOr(place);
    }

    template <char Quote>
    Outcome readQuoted(const char*& place, std::string_view& value) {
        const char* const begin = place + 1;
        place = findSpecial<Quote, '<', '&'>(begin);
        if (*place == Quote) {
            value = {begin, static_cast<std::size_t>(place++ - begin)};
            return Outcome::kRead;
        }
        std::string& decoded = decoded_[attributes_.size()];
        decoded.assign(begin, place);
        while (*place != Quote) {
            const Outcome outcome = decode(place, decoded);
            if (outcome != Outcome::kRead) return outcome;
            const char* const stop = findSpecial<Quote, '<', '&'>(place);
            decoded.append(place, stop);
            place = stop;
        }
        ++place;
        value = decoded;
        return Outcome::kRead;
    }

    // Decodes the special byte at `place` of an attribute's value and what belongs to it.
    Outcome decode(const char*& place, std::string& decoded) const {
        if (*place == '\n' || *place == '\t') {
            decoded += ' ';
            ++place;
            return Outcome::kRead;
        }
        std::array<char, 4> character{};
        std::size_t length = 0;
        if (*place == '&') {
            const Outcome outcome = readReference(place, character.data(), length);
            decoded.append(character.data(), length);
            return outcome;
        }
        if (static_cast<signed char>(*place) >= 0) return endOr(place);
        if (end_ - place < 4) return Outcome::kIncomplete;
        length = characterLength(place);
        if (length == 0) return Outcome::kNotPlain;
        decoded.append(place, length);
        place += length;
        return Outcome::kRead;
    }

    DocumentFile& file_;
    const std::size_t blockSize_;
    PlainSink& sink_;
    std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(kBufferSize + kPadding);
    const char* next_ = buffer_.get();  // what has not been read yet, up to end_
    const char* end_ = next_;
    std::size_t depth_ = 0;                              // the number of open elements
    bool declared_ = false;                              // the declaration has been read, or there is none
    bool ended_ = false;                                 // an element has ended; at depth 0, the root
    std::vector<AttributeText> attributes_;              // of the current tag
    std::array<std::string, kMaxAttributes> decoded_{};  // the values that differ from their source
};

}  // namespace

bool readPlainDocument(DocumentFile& file, int blockSize, PlainSink& sink) {
    return PlainReader(file, blockSize, sink).read();
}

}  // namespace tessa
