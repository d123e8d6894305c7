#pragma once

#include <string>
#include <string_view>

namespace kest {

// A wide string with locale-independent comparison.
class String {
  public:
    String() = default;
    // Null is an empty text.
    explicit String(const wchar_t* text);
    explicit String(std::wstring_view text);

    // NUL-terminated; valid until the String changes or is destroyed.
    const wchar_t* text() const { return text_.c_str(); }
    std::size_t length() const { return text_.size(); }
    std::wstring_view view() const { return text_; }

    // 0 when the texts are equal, negative when this one sorts before `other`, otherwise positive. Null is an empty
    // text. A nonzero `ignoreCase` ignores the case of ASCII letters.
    int compareTo(const wchar_t* other) const;
    int compareTo(const String& other, int ignoreCase) const;

  private:
    std::wstring text_;
};

}  // namespace kest
