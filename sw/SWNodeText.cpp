#include "sw/SWNodeText.h"

#include "kest/Text.h"

namespace zav {

std::streamsize SWNodeText::Buffer::xsputn(const char* text, std::streamsize length) {
    bytes.append(text, static_cast<std::size_t>(length));
    return length;
}

SWNodeText::Buffer::int_type SWNodeText::Buffer::overflow(int_type byte) {
    if (!traits_type::eq_int_type(byte, traits_type::eof())) bytes += traits_type::to_char_type(byte);
    return traits_type::not_eof(byte);
}

SWNodeText::SWNodeText() : stream_(&buffer_) {
    // By default a stream swallows exceptions of its buffer.
    stream_.exceptions(std::ios::badbit);
}

std::wstring SWNodeText::of(const tessa::Node* node, int mode) {
    buffer_.bytes.clear();
    node->write(stream_, mode);
    return kest::widen(buffer_.bytes);
}

}  // namespace zav
