#pragma once

#include <string>
#include <string_view>

namespace kest {

// A wide string that compares itself.
class String {
  public:
    String() = default;
    // A null text is an empty one.
    explicit String(const wchar_t* text);
    explicit String(std::wstring_view text);

    // The text, NUL-terminated; valid until the String changes or dies.
    const wchar_t* text() const { return text_.c_str(); }
    std::size_t length() const { return text_.size(); }
    std::wstring_view view() const { return text_; }

    // 0 when both are the same text, else negative or positive as this one sorts before or behind the other.
    // A null `other` is an empty text. With `ignoreCase` not 0, "GUID" and "guid" are the same.
    int compareTo(const wchar_t* other) const;
    int compareTo(const String& other, int ignoreCase) const;

  private:
    std::wstring text_;
};

}  // namespace kest
