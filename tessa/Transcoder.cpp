#include "tessa/Transcoder.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

#include "kest/Escape.h"
#include "tessa/ReadError.h"

namespace tessa {

namespace {

// An upper bound for the bytes of a character in any encoding and for the UTF-8 that a conversion may hold back.
constexpr std::size_t kMaxCharacterBytes = 64;

constexpr char kBadByte = '\xFF';

}  // namespace

Transcoder::Transcoder(const char* encoding) : converter_(iconv_open("UTF-8", encoding)) {
    if (reinterpret_cast<std::intptr_t>(converter_) != -1) return;
    if (errno == ENOMEM) throw std::bad_alloc();
    throw Fault{"unknown encoding " + kest::quoted(encoding), 1};
}

Transcoder::~Transcoder() {
    iconv_close(converter_);
}

int Transcoder::read(DocumentFile& file, char* buffer, int size) {
    const auto blockSize = static_cast<std::size_t>(size);
    while (textBegin_ == textEnd_ && !ended_) fill(file, blockSize);
    const std::size_t count = std::min(textEnd_ - textBegin_, blockSize);
    if (count != 0) std::memcpy(buffer, text_.data() + textBegin_, count);
    textBegin_ += count;
    return static_cast<int>(count);
}

void Transcoder::fill(DocumentFile& file, std::size_t blockSize) {
    textBegin_ = 0;
    textEnd_ = 0;
    if (starved_) {
        const std::size_t left = bytes_.size();
        bytes_.resize(left + blockSize);
        const int count = file.read(bytes_.data() + left, static_cast<int>(blockSize));
        bytes_.resize(left + static_cast<std::size_t>(count));
        ended_ = count == 0;
    }
    text_.resize(std::max(text_.size(), 2 * bytes_.size() + 2 * kMaxCharacterBytes));
    if (ended_) {
        finish();
    } else {
        convert();
    }
}

// Converts until the input is used up or the output is full.
void Transcoder::convert() {
    char* in = bytes_.data();
    std::size_t inLeft = bytes_.size();
    char* out = text_.data();
    std::size_t outLeft = text_.size() - 1;  // leaves room for the bad byte
    const std::size_t result = iconv(converter_, &in, &inLeft, &out, &outLeft);
    const int error = result == static_cast<std::size_t>(-1) ? errno : 0;
    const bool moved = inLeft != bytes_.size() || out != text_.data();
    bytes_.erase(bytes_.begin(), bytes_.end() - static_cast<std::ptrdiff_t>(inLeft));
    textEnd_ = static_cast<std::size_t>(out - text_.data());
    starved_ = error != E2BIG;
    const bool cutOff = error == EINVAL && bytes_.size() < kMaxCharacterBytes;
    const bool full = error == E2BIG && moved;
    if (error != 0 && !cutOff && !full) endWithBadByte();
}

// Writes what the conversion has held back.
void Transcoder::finish() {
    char* out = text_.data();
    std::size_t outLeft = text_.size() - 1;
    const bool flushed = iconv(converter_, nullptr, nullptr, &out, &outLeft) != static_cast<std::size_t>(-1);
    textEnd_ = static_cast<std::size_t>(out - text_.data());
    if (!flushed || !bytes_.empty()) endWithBadByte();
}

void Transcoder::endWithBadByte() {
    text_[textEnd_++] = kBadByte;
    ended_ = true;
}

}  // namespace tessa
