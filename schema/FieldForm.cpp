#include "schema/FieldForm.h"

#include <arpa/inet.h>

#include <algorithm>
#include <string>

namespace schema {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f');
}

bool isCount(std::string_view value) {
    constexpr std::string_view kGreatest = "9223372036854775807";
    if (value.empty() || !std::ranges::all_of(value, isDigit)) return false;
    if (value.size() > 1 && value.front() == '0') return false;
    return value.size() < kGreatest.size() || (value.size() == kGreatest.size() && value <= kGreatest);
}

bool isDecimal(std::string_view value) {
    const std::size_t point = value.find('.');
    return point != std::string_view::npos && isCount(value.substr(0, point)) && point + 1 < value.size() &&
           std::ranges::all_of(value.substr(point + 1), isDigit);
}

// Whether the value has a digit in place of each 0 of the pattern, a hexadecimal digit in place of each x, and is like the
// pattern elsewhere.
bool isLike(std::string_view pattern, std::string_view value) {
    return std::ranges::equal(pattern, value, [](char wanted, char c) {
        return wanted == '0' ? isDigit(c) : wanted == 'x' ? isHexDigit(c) : wanted == c;
    });
}

bool isWithin(std::string_view digits, int least, int greatest) {
    int number = 0;
    for (const char digit : digits) number = 10 * number + (digit - '0');
    return number >= least && number <= greatest;
}

bool isTime(std::string_view value) {
    if (!isLike("0000-00-00", value) && !isLike("0000-00-00T00:00:00Z", value)) return false;
    if (!isWithin(value.substr(5, 2), 1, 12) || !isWithin(value.substr(8, 2), 1, 31)) return false;
    return value.size() == 10 ||
           (isWithin(value.substr(11, 2), 0, 23) && isWithin(value.substr(14, 2), 0, 59) &&
            isWithin(value.substr(17, 2), 0, 60));
}

bool isHardwareAddress(std::string_view value) {
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (i % 3 == 2 ? value[i] != ':' : !isHexDigit(value[i])) return false;
    }
    return value.size() % 3 == 2;
}

bool isNetworkAddress(int family, std::string_view value) {
    in6_addr address{};
    return inet_pton(family, std::string(value).c_str(), &address) == 1;
}

// Calls `matches` with each of the values that `separator` joins, until one does not match.
template <class Matches>
bool allOf(std::string_view values, char separator, const Matches& matches) {
    for (;;) {
        const std::size_t end = values.find(separator);
        if (!matches(values.substr(0, end))) return false;
        if (end == std::string_view::npos) return true;
        values.remove_prefix(end + 1);
    }
}

bool isOneOf(std::string_view choices, std::string_view value) {
    return !allOf(choices, '|', [value](std::string_view choice) { return choice != value; });
}

bool hasFormOfOne(const Field& field, std::string_view value) {
    switch (field.type) {
        case Type::Text:
            return true;
        case Type::Count:
            return isCount(value);
        case Type::Integer:
            return isCount(value.substr(value.starts_with('-') ? 1 : 0));
        case Type::Decimal:
            return isDecimal(value);
        case Type::Boolean:
            return value == "true" || value == "false";
        case Type::Time:
            return isTime(value);
        case Type::Hex:
            return !value.empty() && std::ranges::all_of(value, isHexDigit);
        case Type::Uuid:
            return isLike("xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", value);
        case Type::Choice:
            return isOneOf(field.choices, value);
        case Type::Ipv4Address:
            return isNetworkAddress(AF_INET, value);
        case Type::Ipv6Address:
            return isNetworkAddress(AF_INET6, value);
        case Type::HardwareAddress:
            return isHardwareAddress(value);
    }
    return false;
}

}  // namespace

bool hasForm(const Field& field, std::string_view value) {
    if (value.empty() || field.type == Type::Text) return true;
    if (!field.list) return hasFormOfOne(field, value);
    return allOf(value, ';', [&field](std::string_view one) { return hasFormOfOne(field, one); });
}

bool hasSanitizedForm(const Field& field, std::string_view value) {
    if (field.privacy == Privacy::Public || field.privacy == Privacy::Path) return hasForm(field, value);
    return allOf(value, ';',
                 [](std::string_view one) { return one.empty() || isLike("xxxxxxxxxxxxxxxx", one); });
}

}  // namespace schema
