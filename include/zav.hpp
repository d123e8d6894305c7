// SPDX-License-Identifier: Apache-2.0
//
// zav.hpp: the interface of zav.h as objects of C++17. Header only; link the same library.
//
//     zav::Library library("my product");
//     zav::Hardware hardware = library.hardware({"Processor"});
//     for (zav::Instance processor : hardware.instances("Processor"))
//         std::cout << processor["Name"] << '\n';
//
// 1. Lifetime. Library, Hardware and Software are owners; they can be moved but not copied. A Hardware or Software keeps its library
//    open, so they may be destroyed in any order. Everything else (Group, Instance, Field, Result, Variable, Text) is a view of a
//    few words that costs nothing to copy. A view is valid until the next scan or evaluation of the object that it came from,
//    or until this object is destroyed; a temporary gives no views. utf8() makes a copy that lives on.
// 2. Text. Strings that are passed are bytes; text is UTF-8. Views hold the wide text of zav.h; utf8() and operator<< convert it.
// 3. Errors. A function that can fail throws Error, and has a twin `try_...` that returns an Expected instead. With
//    -fno-exceptions only the twins exist. Both may throw std::bad_alloc where they convert strings.
// 4. Threads. As in zav.h: calls on a Library and on what was made with it must not overlap; different threads may use different
//    libraries at the same time.
// 5. Cost. A call of a view is one call of zav.h.
#ifndef ZAV_HPP
#define ZAV_HPP

#if !defined(__cplusplus) || __cplusplus < 201703L
#error "zav.hpp needs C++17 or newer; C and older C++ programs include zav.h"
#endif

#if defined(__cpp_exceptions)
#define ZAV_HPP_EXCEPTIONS 1
#else
#define ZAV_HPP_EXCEPTIONS 0
#endif

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>
#if ZAV_HPP_EXCEPTIONS
#include <stdexcept>
#endif

#include "zav.h"
#include "zav_codes.h"

namespace zav {

// ---- Errors ----------------------------------------------------------------------------------------------

#if ZAV_HPP_EXCEPTIONS
/// What the throwing functions throw: the return code of zav.h, and its sentence as what().
class Error : public std::runtime_error {
  public:
    explicit Error(int code) : std::runtime_error(ZAV_code_text(code)), code_(code) {}
    /// ZAV_ERROR_HW_SCANNER, for example.
    int code() const noexcept { return code_; }

  private:
    int code_;
};
#endif

/// A return code other than 0, for the construction of an Expected.
struct Failure {
    int code;
};

/// A value, or the return code that tells why there is none.
template <class T>
class [[nodiscard]] Expected {
  public:
    Expected(T value) noexcept(std::is_nothrow_move_constructible_v<T>) : value_(std::move(value)) {}
    Expected(Failure failure) noexcept : code_(failure.code) {}

    explicit operator bool() const noexcept { return value_.has_value(); }
    bool has_value() const noexcept { return value_.has_value(); }
    /// ZAV_SUCCESS if there is a value.
    int code() const noexcept { return code_; }
    /// The sentence for the code.
    const char* text() const noexcept { return ZAV_code_text(code_); }

    /// REQUIRES: has_value().
    T& operator*() & noexcept { return *value_; }
    const T& operator*() const& noexcept { return *value_; }
    T&& operator*() && noexcept { return *std::move(value_); }
    T* operator->() noexcept { return &*value_; }
    const T* operator->() const noexcept { return &*value_; }

    T value_or(T other) const& { return value_ ? *value_ : std::move(other); }
    T value_or(T other) && { return value_ ? *std::move(value_) : std::move(other); }
#if ZAV_HPP_EXCEPTIONS
    /// The value; throws Error if there is none.
    T value() && {
        if (!value_) throw Error(code_);
        return *std::move(value_);
    }
    const T& value() const& {
        if (!value_) throw Error(code_);
        return *value_;
    }
#endif

  private:
    std::optional<T> value_;
    int code_ = ZAV_SUCCESS;
};

/// The outcome of a function that returns nothing.
template <>
class [[nodiscard]] Expected<void> {
  public:
    Expected() noexcept = default;
    Expected(Failure failure) noexcept : code_(failure.code) {}

    explicit operator bool() const noexcept { return code_ == ZAV_SUCCESS; }
    bool has_value() const noexcept { return code_ == ZAV_SUCCESS; }
    int code() const noexcept { return code_; }
    const char* text() const noexcept { return ZAV_code_text(code_); }
#if ZAV_HPP_EXCEPTIONS
    /// Throws Error if the function failed.
    void value() const {
        if (code_ != ZAV_SUCCESS) throw Error(code_);
    }
#endif

  private:
    int code_ = ZAV_SUCCESS;
};

// ---- Text ------------------------------------------------------------------------------------------------

namespace detail {

inline void append_utf8(std::string& utf8, char32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) c = 0xFFFD;
    const auto put = [&utf8](char32_t byte) { utf8 += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

// A wide character is a Unicode character.
struct Characters {
    static std::string utf8(std::wstring_view text) {
        std::string utf8;
        utf8.reserve(text.size());
        for (const wchar_t c : text) append_utf8(utf8, static_cast<char32_t>(c));
        return utf8;
    }
};

// A wide character is a byte of UTF-8, signed.
struct Bytes {
    static std::string utf8(std::wstring_view text) {
        std::string utf8;
        utf8.reserve(text.size());
        for (const wchar_t c : text) utf8 += static_cast<char>(static_cast<unsigned char>(c));
        return utf8;
    }
};

// One wide character for each byte, as zav.h takes paths and other text.
inline std::wstring widen(std::string_view bytes) {
    std::wstring wide;
    wide.reserve(bytes.size());
    for (const char c : bytes) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}

// Text that zav.h takes as a part of XML.
inline std::wstring escape_xml(std::string_view text) {
    std::wstring escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += L"&amp;";
                break;
            case '<':
                escaped += L"&lt;";
                break;
            case '>':
                escaped += L"&gt;";
                break;
            case '"':
                escaped += L"&quot;";
                break;
            case '\t':
                escaped += L"&#9;";
                break;
            case '\n':
                escaped += L"&#10;";
                break;
            case '\r':
                escaped += L"&#13;";
                break;
            default:
                escaped += static_cast<wchar_t>(static_cast<unsigned char>(c));
        }
    }
    return escaped;
}

}  // namespace detail

/// A view of a text of the library: the name of a field, a value.
template <class Encoding>
class BasicText {
  public:
    /// The empty text.
    constexpr BasicText() noexcept = default;
    constexpr explicit BasicText(const wchar_t* text) noexcept : text_(text) {}

    /// As zav.h returned it; never null.
    constexpr const wchar_t* c_str() const noexcept { return text_; }
    constexpr std::wstring_view view() const noexcept { return text_; }
    constexpr bool empty() const noexcept { return *text_ == L'\0'; }
    /// A copy in UTF-8.
    std::string utf8() const { return Encoding::utf8(view()); }

    friend constexpr bool operator==(BasicText text, std::wstring_view other) noexcept {
        return text.view() == other;
    }
    friend constexpr bool operator!=(BasicText text, std::wstring_view other) noexcept {
        return text.view() != other;
    }
    /// Writes UTF-8.
    friend std::ostream& operator<<(std::ostream& out, BasicText text) { return out << text.utf8(); }

  private:
    const wchar_t* text_ = L"";
};

using Text = BasicText<detail::Characters>;
/// The text of metadata and warnings, whose wide characters are the bytes of UTF-8. utf8() is the same for both kinds.
using ByteText = BasicText<detail::Bytes>;

// ---- Ranges ----------------------------------------------------------------------------------------------

namespace detail {

/// The iterator of a range that has get(int). It holds the range, which is a view, and may therefore outlive it.
template <class Range>
class Iterator {
  public:
    using value_type = decltype(std::declval<const Range&>().get(0));
    using reference = value_type;
    using pointer = void;
    using difference_type = std::ptrdiff_t;
    // The elements are made when they are asked for, so for C++17 this is an input iterator.
    using iterator_category = std::input_iterator_tag;
    using iterator_concept = std::random_access_iterator_tag;

    Iterator() = default;
    Iterator(const Range& range, std::ptrdiff_t index) noexcept : range_(range), index_(index) {}

    reference operator*() const { return range_.get(static_cast<int>(index_)); }
    reference operator[](std::ptrdiff_t n) const { return range_.get(static_cast<int>(index_ + n)); }
    Iterator& operator+=(std::ptrdiff_t n) noexcept {
        index_ += n;
        return *this;
    }
    Iterator& operator-=(std::ptrdiff_t n) noexcept { return *this += -n; }
    Iterator& operator++() noexcept { return *this += 1; }
    Iterator& operator--() noexcept { return *this += -1; }
    Iterator operator++(int) noexcept { return std::exchange(*this, *this + 1); }
    Iterator operator--(int) noexcept { return std::exchange(*this, *this - 1); }

    friend Iterator operator+(Iterator at, std::ptrdiff_t n) noexcept { return at += n; }
    friend Iterator operator+(std::ptrdiff_t n, Iterator at) noexcept { return at += n; }
    friend Iterator operator-(Iterator at, std::ptrdiff_t n) noexcept { return at -= n; }
    friend std::ptrdiff_t operator-(const Iterator& a, const Iterator& b) noexcept {
        return a.index_ - b.index_;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a.index_ == b.index_; }
    friend bool operator!=(const Iterator& a, const Iterator& b) noexcept { return a.index_ != b.index_; }
    friend bool operator<(const Iterator& a, const Iterator& b) noexcept { return a.index_ < b.index_; }
    friend bool operator>(const Iterator& a, const Iterator& b) noexcept { return a.index_ > b.index_; }
    friend bool operator<=(const Iterator& a, const Iterator& b) noexcept { return a.index_ <= b.index_; }
    friend bool operator>=(const Iterator& a, const Iterator& b) noexcept { return a.index_ >= b.index_; }

  private:
    Range range_;
    std::ptrdiff_t index_ = 0;
};

/// What ranges have in common: `Derived` has get(int), a count, and views only.
template <class Derived>
class Range {
  public:
    std::size_t size() const noexcept { return static_cast<std::size_t>(count_); }
    bool empty() const noexcept { return count_ == 0; }
    auto begin() const noexcept { return Iterator<Derived>(derived(), 0); }
    auto end() const noexcept { return Iterator<Derived>(derived(), count_); }
    /// REQUIRES: index < size().
    auto operator[](std::size_t index) const { return derived().get(static_cast<int>(index)); }
    /// REQUIRES: !empty().
    auto front() const { return derived().get(0); }

  protected:
    Range() noexcept = default;
    explicit Range(int count) noexcept : count_(count) {}

  private:
    const Derived& derived() const noexcept { return static_cast<const Derived&>(*this); }

    int count_ = 0;
};

}  // namespace detail

// ---- Hardware --------------------------------------------------------------------------------------------

/// A field of an instance. The value is empty when it is unknown.
struct Field {
    Text name;
    Text value;
};

/// The fields of an instance, in the scanner's order.
class Fields : public detail::Range<Fields> {
  public:
    Fields() noexcept = default;
    Fields(ZAVHwCtx* context, int group, int instance, const wchar_t** names, int count) noexcept
        : Range(count), context_(context), group_(group), instance_(instance), names_(names) {}
    Field get(int index) const noexcept {
        const wchar_t* value = L"";
        ZAV_hw_get_value(context_, group_, instance_, names_[index], &value);
        return {Text(names_[index]), Text(value)};
    }

  private:
    ZAVHwCtx* context_ = nullptr;
    int group_ = 0;
    int instance_ = 0;
    const wchar_t** names_ = nullptr;
};

/// One instance of a group: a processor, a disk.
class Instance {
  public:
    Instance() noexcept = default;
    Instance(ZAVHwCtx* context, int group, int index) noexcept
        : context_(context), group_(group), index_(index) {}

    /// The value of the first field of that name. ZAV_ERROR_HW_FIELD if there is none.
    Expected<Text> try_value(const wchar_t* field) const noexcept {
        const wchar_t* value = nullptr;
        const int code = ZAV_hw_get_value(context_, group_, index_, field, &value);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Text(value);
    }
    Expected<Text> try_value(std::string_view field) const { return try_value(detail::widen(field).c_str()); }
    Expected<Fields> try_fields() const noexcept {
        const wchar_t** names = nullptr;
        int count = 0;
        const int code = ZAV_hw_get_fields(context_, group_, index_, &names, &count);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Fields(context_, group_, index_, names, count);
    }
#if ZAV_HPP_EXCEPTIONS
    Text value(const wchar_t* field) const {
        return try_value(field).value();
    }
    Text value(std::string_view field) const {
        return try_value(field).value();
    }
    /// The same as value().
    Text operator[](const wchar_t* field) const {
        return value(field);
    }
    Text operator[](std::string_view field) const {
        return value(field);
    }
    Fields fields() const {
        return try_fields().value();
    }
#endif

  private:
    ZAVHwCtx* context_ = nullptr;
    int group_ = 0;
    int index_ = 0;
};

/// The instances of a group, in the scanner's order.
class Instances : public detail::Range<Instances> {
  public:
    Instances() noexcept = default;
    Instances(ZAVHwCtx* context, int group, int count) noexcept
        : Range(count), context_(context), group_(group) {}
    Instance get(int index) const noexcept { return {context_, group_, index}; }

  private:
    ZAVHwCtx* context_ = nullptr;
    int group_ = 0;
};

/// A group that a scan was asked for.
class Group {
  public:
    Group() noexcept = default;
    Group(ZAVHwCtx* context, int id, Text name, int count) noexcept
        : context_(context), id_(id), name_(name), count_(count) {}

    /// ZAV_HW_PROCESSOR, for example.
    int id() const noexcept { return id_; }
    /// "Processor", for example.
    Text name() const noexcept { return name_; }
    Instances instances() const noexcept { return {context_, id_, count_}; }

  private:
    ZAVHwCtx* context_ = nullptr;
    int id_ = 0;
    Text name_;
    int count_ = 0;
};

/// How functions take a group: its number (ZAV_HW_PROCESSOR) or its name ("Processor"), which is case-sensitive.
class GroupKey {
  public:
    GroupKey(int id) noexcept : id_(id) {}
    GroupKey(const char* name) noexcept : name_(name) {}
    GroupKey(std::string_view name) noexcept : name_(name) {}
    GroupKey(const std::string& name) noexcept : name_(name) {}

    /// The group's number. ZAV_ERROR_HW_GROUP if there is no group of that name.
    Expected<int> id(ZAVHwCtx* context) const noexcept {
        if (context == nullptr) return Failure{ZAV_ERROR_CONTEXT};
        if (name_.empty()) return id_;
        const wchar_t* name = nullptr;
        for (int id = 1; id <= kLastGroup; ++id) {
            if (ZAV_hw_get_group_name(context, id, &name) == ZAV_SUCCESS && equals(name)) return id;
        }
        return Failure{ZAV_ERROR_HW_GROUP};
    }

    static constexpr int kLastGroup = ZAV_HW_IPV6_ADDRESS;

  private:
    bool equals(const wchar_t* other) const noexcept {
        for (const char c : name_) {
            if (*other++ != static_cast<wchar_t>(static_cast<unsigned char>(c))) return false;
        }
        return *other == L'\0';
    }

    int id_ = -1;
    std::string_view name_;
};

/// A message of the library. The texts are valid during the call only.
struct Message {
    int level;  // 0 for errors and notices that matter at every setting, 1 for notable events, 2 for the trace
    int component;  // 1 for a library, 3 for hardware, 4 for software
    const char* function;
    const char* text;
};

/// Receives the messages of a library and of everything made with it, never from two threads at once. It must not use the
/// library. If it throws, the function that sent the message fails with ZAV_ERROR_MEMORY.
using Log = std::function<void(const Message&)>;

namespace detail {

inline void pass_message(int level, int component, void* log, const char* function, const char* text) {
    (*static_cast<const Log*>(log))(Message{level, component, function, text});
}

/// The handle and the log, at an address that stays the same when their owners are moved.
struct LibraryState {
    explicit LibraryState(Log receiver) : log(std::move(receiver)) {}
    ~LibraryState() {
        if (handle != nullptr) ZAV_free(handle);
    }
    LibraryState(const LibraryState&) = delete;
    LibraryState& operator=(const LibraryState&) = delete;

    ZAVlogCallback callback() const noexcept { return log ? pass_message : nullptr; }

    Log log;
    ZAVCtx* handle = nullptr;
};

/// Frees a context, and then the library if nothing else uses it.
struct FreeContext {
    std::shared_ptr<LibraryState> library;
    void operator()(ZAVHwCtx* context) const noexcept { ZAV_hw_free(context); }
    void operator()(ZAVSwCtx* context) const noexcept { ZAV_sw_free(context); }
};

}  // namespace detail

/// A hardware inventory: the groups that are wanted, and what the last scan found.
class Hardware {
  public:
    /// Enables or disables a group, or all with ZAV_HW_ALL. There are no results until the next scan.
    Expected<void> try_enable(GroupKey group, bool wanted = true) {
        const Expected<int> id = group.id(context());
        if (!id) return Failure{id.code()};
        return result_of(ZAV_hw_setopt(context(), *id, wanted ? 1 : 0));
    }
    /// Scans the enabled groups and waits for the end of the scan.
    Expected<void> try_scan() noexcept { return result_of(ZAV_hw_run(context())); }
    /// The instances of an enabled group.
    Expected<Instances> try_instances(GroupKey group) const& noexcept {
        const Expected<int> id = group.id(context());
        if (!id) return Failure{id.code()};
        int count = 0;
        const int code = ZAV_hw_get_group_instances(context(), *id, &count);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Instances(context(), *id, count);
    }
    /// The enabled groups, in the order of their numbers; none without a valid scan.
    std::vector<Group> groups() const& {
        std::vector<Group> groups;
        for (int id = 1; id <= GroupKey::kLastGroup; ++id) {
            const wchar_t* name = nullptr;
            int count = 0;
            if (ZAV_hw_get_group_instances(context(), id, &count) == ZAV_SUCCESS &&
                ZAV_hw_get_group_name(context(), id, &name) == ZAV_SUCCESS)
                groups.emplace_back(context(), id, Text(name), count);
        }
        return groups;
    }
    /// The scanner's exit status; -1 without a valid scan.
    int return_code() const noexcept {
        int code = -1;
        ZAV_hw_get_returncode(context(), &code);
        return code;
    }
#if ZAV_HPP_EXCEPTIONS
    void enable(GroupKey group, bool wanted = true) {
        try_enable(group, wanted).value();
    }
    void scan() {
        try_scan().value();
    }
    Instances instances(GroupKey group) const& {
        return try_instances(group).value();
    }
#endif
    // A view of a temporary would outlive what it views.
    Expected<Instances> try_instances(GroupKey group) const&& = delete;
    Instances instances(GroupKey group) const&& = delete;
    std::vector<Group> groups() const&& = delete;

    /// For the functions of zav.h; null after a move.
    ZAVHwCtx* context() const noexcept {
        return context_.get();
    }

  private:
    friend class Library;
    Hardware(ZAVHwCtx* context, std::shared_ptr<detail::LibraryState> library) noexcept
        : context_(context, detail::FreeContext{std::move(library)}) {}
    static Expected<void> result_of(int code) noexcept {
        return Failure{code};
    }

    std::unique_ptr<ZAVHwCtx, detail::FreeContext> context_;
};

// ---- Software --------------------------------------------------------------------------------------------

/// A variable that a matched signature reports.
struct Variable {
    Text name;
    Text value;
};

/// The variables of a result, in ascending order of their names.
class Variables : public detail::Range<Variables> {
  public:
    Variables() noexcept = default;
    Variables(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t** names, int count) noexcept
        : Range(count), context_(context), result_(result), names_(names) {}
    Variable get(int index) const noexcept {
        const wchar_t* value = L"";
        ZAV_sw_get_value(context_, result_, names_[index], &value);
        return {Text(names_[index]), Text(value)};
    }

  private:
    ZAVSwCtx* context_ = nullptr;
    ZAVSwResult* result_ = nullptr;
    const wchar_t** names_ = nullptr;
};

/// A matched signature.
class Result {
  public:
    Result() noexcept = default;
    Result(ZAVSwCtx* context, ZAVSwResult* result) noexcept : context_(context), result_(result) {}

    Expected<Text> try_guid() const noexcept { return text<Text>(ZAV_sw_get_guid); }
    /// The value of a variable. ZAV_ERROR_SW_VARIABLE if the result has no such variable.
    Expected<Text> try_value(const wchar_t* variable) const noexcept {
        const wchar_t* value = nullptr;
        const int code = ZAV_sw_get_value(context_, result_, variable, &value);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Text(value);
    }
    Expected<Text> try_value(std::string_view variable) const {
        return try_value(detail::widen(variable).c_str());
    }
    Expected<Variables> try_variables() const noexcept {
        const wchar_t** names = nullptr;
        int count = 0;
        const int code = ZAV_sw_get_variables(context_, result_, &names, &count);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Variables(context_, result_, names, count);
    }
    /// XML text; empty if the signature has none.
    Expected<ByteText> try_metadata() const noexcept { return text<ByteText>(ZAV_sw_get_metadata); }
#if ZAV_HPP_EXCEPTIONS
    Text guid() const {
        return try_guid().value();
    }
    Text value(const wchar_t* variable) const {
        return try_value(variable).value();
    }
    Text value(std::string_view variable) const {
        return try_value(variable).value();
    }
    /// The same as value().
    Text operator[](const wchar_t* variable) const {
        return value(variable);
    }
    Text operator[](std::string_view variable) const {
        return value(variable);
    }
    Variables variables() const {
        return try_variables().value();
    }
    ByteText metadata() const {
        return try_metadata().value();
    }
#endif

  private:
    template <class T>
    Expected<T> text(int (*getter)(ZAVSwCtx*, ZAVSwResult*, const wchar_t**)) const noexcept {
        const wchar_t* text = nullptr;
        const int code = getter(context_, result_, &text);
        if (code != ZAV_SUCCESS) return Failure{code};
        return T(text);
    }

    ZAVSwCtx* context_ = nullptr;
    ZAVSwResult* result_ = nullptr;
};

/// Matched signatures, in the scanner's order.
class Results : public detail::Range<Results> {
  public:
    Results() noexcept = default;
    Results(ZAVSwCtx* context, ZAVSwResult** results, int count) noexcept
        : Range(count), context_(context), results_(results) {}
    Result get(int index) const noexcept { return {context_, results_[index]}; }

  private:
    ZAVSwCtx* context_ = nullptr;
    ZAVSwResult** results_ = nullptr;
};

/// The warnings of an evaluation, each an XML text of one line.
class Warnings : public detail::Range<Warnings> {
  public:
    Warnings() noexcept = default;
    Warnings(const wchar_t** warnings, int count) noexcept : Range(count), warnings_(warnings) {}
    ByteText get(int index) const noexcept { return ByteText(warnings_[index]); }

  private:
    const wchar_t** warnings_ = nullptr;
};

/// A software inventory: preset variables and settings, and what the last evaluation found.
class Software {
  public:
    /// Presets a variable of the signature whose identifier is `guid`. The texts are escaped for XML.
    Expected<void> try_set_variable(std::string_view guid, std::string_view name, std::string_view value) {
        return result_of(ZAV_sw_setopt_variable(context(), detail::escape_xml(name).c_str(),
                                                detail::escape_xml(value).c_str(),
                                                detail::escape_xml(guid).c_str()));
    }
    /// Adds a setting of the scanner: ("Secrets", "allow", "/root"). The texts are escaped for XML.
    Expected<void> try_add_setting(std::string_view plugin, std::string_view attribute,
                                   std::string_view value) {
        return result_of(ZAV_sw_setopt_config(context(), detail::escape_xml(plugin).c_str(),
                                              detail::escape_xml(attribute).c_str(),
                                              detail::escape_xml(value).c_str()));
    }
    /// Evaluates a signature, given as XML text in UTF-8, and waits for the end of the evaluation.
    Expected<void> try_evaluate(std::string_view signature) {
        return result_of(ZAV_sw_evaluate(context(), detail::widen(signature).c_str()));
    }
    /// Evaluates several signatures in one run of the scanner.
    template <class Strings,
              class = std::enable_if_t<!std::is_convertible_v<const Strings&, std::string_view>>>
    Expected<void> try_evaluate(const Strings& signatures) {
        std::vector<std::wstring> wide;
        for (const auto& signature : signatures) wide.push_back(detail::widen(signature));
        std::vector<const wchar_t*> texts;
        texts.reserve(wide.size() + 1);
        for (const std::wstring& text : wide) texts.push_back(text.c_str());
        texts.push_back(nullptr);
        return result_of(ZAV_sw_evaluate_multi(context(), texts.data(), static_cast<unsigned>(wide.size())));
    }
    /// Evaluates the signatures of a file.
    Expected<void> try_evaluate_file(std::string_view path) {
        return result_of(ZAV_sw_evaluate_file(context(), detail::widen(path).c_str()));
    }
    Expected<Results> try_results() const& noexcept {
        ZAVSwResult** results = nullptr;
        int count = 0;
        const int code = ZAV_sw_get_results(context(), &results, &count);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Results(context(), results, count);
    }
    /// The results with that identifier, which is case-sensitive; none if nothing matched.
    Expected<Results> try_find(std::string_view guid) const& {
        ZAVSwResult** results = nullptr;
        unsigned count = 0;
        const int code =
            ZAV_sw_find_results_by_guid(context(), detail::widen(guid).c_str(), &results, &count);
        if (code == ZAV_ERROR_SW_NOT_FOUND) return Results();
        if (code != ZAV_SUCCESS) return Failure{code};
        return Results(context(), results, static_cast<int>(count));
    }
    Expected<Warnings> try_warnings() const& noexcept {
        const wchar_t** warnings = nullptr;
        int count = 0;
        const int code = ZAV_sw_get_warnings(context(), &warnings, &count);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Warnings(warnings, count);
    }
    /// The scanner's exit status; -1 without valid results.
    int return_code() const noexcept {
        int code = -1;
        ZAV_sw_get_returncode(context(), &code);
        return code;
    }
#if ZAV_HPP_EXCEPTIONS
    void set_variable(std::string_view guid, std::string_view name, std::string_view value) {
        try_set_variable(guid, name, value).value();
    }
    void add_setting(std::string_view plugin, std::string_view attribute, std::string_view value) {
        try_add_setting(plugin, attribute, value).value();
    }
    void evaluate(std::string_view signature) {
        try_evaluate(signature).value();
    }
    template <class Strings,
              class = std::enable_if_t<!std::is_convertible_v<const Strings&, std::string_view>>>
    void evaluate(const Strings& signatures) {
        try_evaluate(signatures).value();
    }
    void evaluate_file(std::string_view path) {
        try_evaluate_file(path).value();
    }
    Results results() const& {
        return try_results().value();
    }
    Results find(std::string_view guid) const& {
        return try_find(guid).value();
    }
    Warnings warnings() const& {
        return try_warnings().value();
    }
#endif
    // A view of a temporary would outlive what it views.
    Expected<Results> try_results() const&& = delete;
    Expected<Results> try_find(std::string_view guid) const&& = delete;
    Expected<Warnings> try_warnings() const&& = delete;
    Results results() const&& = delete;
    Results find(std::string_view guid) const&& = delete;
    Warnings warnings() const&& = delete;

    /// For the functions of zav.h; null after a move.
    ZAVSwCtx* context() const noexcept {
        return context_.get();
    }

  private:
    friend class Library;
    Software(ZAVSwCtx* context, std::shared_ptr<detail::LibraryState> library) noexcept
        : context_(context, detail::FreeContext{std::move(library)}) {}
    static Expected<void> result_of(int code) noexcept {
        return Failure{code};
    }

    std::unique_ptr<ZAVSwCtx, detail::FreeContext> context_;
};

// ---- The library -----------------------------------------------------------------------------------------

/// How a library is opened. An empty text stands for the default.
struct Options {
    std::string toolkit;         // directory of the scanners; default: the one that /etc/zav/zav.ini names
    std::string temp_directory;  // default: the one that TEMP or TMP names, else /tmp
    Log log;                     // default: none
};

/// An open library.
class Library {
  public:
    /// `name` is the calling product's name.
    static Expected<Library> open(const std::string& name, Options options = {}) {
        auto state = std::make_shared<detail::LibraryState>(std::move(options.log));
        const std::wstring temp = detail::widen(options.temp_directory);
        const std::wstring toolkit = detail::widen(options.toolkit);
        const int code =
            ZAV_init(name.c_str(), state->callback(), &state->log, temp.empty() ? nullptr : temp.c_str(),
                     toolkit.empty() ? nullptr : toolkit.c_str(), &state->handle);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Library(std::move(state));
    }

    /// A hardware inventory without groups, not scanned.
    Expected<Hardware> try_new_hardware() const noexcept {
        if (!state_) return Failure{ZAV_ERROR_CONTEXT};
        ZAVHwCtx* context = nullptr;
        const int code = ZAV_hw_init(state_->handle, state_->callback(), &state_->log, &context);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Hardware(context, state_);
    }
    /// Scans these groups. A list in braces, or any range of numbers or names.
    template <class Keys = std::initializer_list<GroupKey>>
    Expected<Hardware> try_hardware(const Keys& groups) const {
        Expected<Hardware> hardware = try_new_hardware();
        if (!hardware) return hardware;
        for (const auto& group : groups) {
            const Expected<void> enabled = hardware->try_enable(group);
            if (!enabled) return Failure{enabled.code()};
        }
        const Expected<void> scanned = hardware->try_scan();
        if (!scanned) return Failure{scanned.code()};
        return hardware;
    }
    /// A software inventory without variables and settings, not evaluated.
    Expected<Software> try_new_software() const noexcept {
        if (!state_) return Failure{ZAV_ERROR_CONTEXT};
        ZAVSwCtx* context = nullptr;
        const int code = ZAV_sw_init(state_->handle, state_->callback(), &state_->log, &context);
        if (code != ZAV_SUCCESS) return Failure{code};
        return Software(context, state_);
    }
    /// Evaluates one signature, or a range of signatures, given as XML text in UTF-8.
    template <class Signatures = std::initializer_list<std::string_view>>
    Expected<Software> try_software(const Signatures& signatures) const {
        Expected<Software> software = try_new_software();
        if (!software) return software;
        const Expected<void> evaluated = software->try_evaluate(signatures);
        if (!evaluated) return Failure{evaluated.code()};
        return software;
    }
    /// Evaluates the signatures of a file.
    Expected<Software> try_software_file(std::string_view path) const {
        Expected<Software> software = try_new_software();
        if (!software) return software;
        const Expected<void> evaluated = software->try_evaluate_file(path);
        if (!evaluated) return Failure{evaluated.code()};
        return software;
    }
#if ZAV_HPP_EXCEPTIONS
    explicit Library(const std::string& name, Options options = {})
        : Library(open(name, std::move(options)).value()) {}
    Hardware new_hardware() const {
        return try_new_hardware().value();
    }
    template <class Keys = std::initializer_list<GroupKey>>
    Hardware hardware(const Keys& groups) const {
        return try_hardware(groups).value();
    }
    Software new_software() const {
        return try_new_software().value();
    }
    template <class Signatures = std::initializer_list<std::string_view>>
    Software software(const Signatures& signatures) const {
        return try_software(signatures).value();
    }
    Software software_file(std::string_view path) const {
        return try_software_file(path).value();
    }
#endif
    Library(Library&&) noexcept = default;
    Library& operator=(Library&&) noexcept = default;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() = default;

    /// For the functions of zav.h; null after a move.
    ZAVCtx* handle() const noexcept {
        return state_ ? state_->handle : nullptr;
    }

  private:
    explicit Library(std::shared_ptr<detail::LibraryState> state) noexcept : state_(std::move(state)) {}

    std::shared_ptr<detail::LibraryState> state_;
};

}  // namespace zav

// The ranges are views, whose iterators may outlive them.
#if defined(__cpp_lib_ranges)
#define ZAV_HPP_VIEW(Type)                                            \
    template <>                                                       \
    inline constexpr bool std::ranges::enable_view<zav::Type> = true; \
    template <>                                                       \
    inline constexpr bool std::ranges::enable_borrowed_range<zav::Type> = true
ZAV_HPP_VIEW(Fields);
ZAV_HPP_VIEW(Instances);
ZAV_HPP_VIEW(Variables);
ZAV_HPP_VIEW(Results);
ZAV_HPP_VIEW(Warnings);
#undef ZAV_HPP_VIEW
#endif

#endif  // ZAV_HPP
