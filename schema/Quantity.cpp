#include "schema/Quantity.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <span>

#include "schema/FieldForm.h"

namespace schema {

namespace {

constexpr std::uint64_t kDecimalStep = 1000;
constexpr std::uint64_t kBinaryStep = 1024;
constexpr std::array<std::string_view, 6> kBytes{"B", "kB", "MB", "GB", "TB", "PB"};
constexpr std::array<std::string_view, 6> kBinaryBytes{"B", "KiB", "MiB", "GiB", "TiB", "PiB"};
constexpr std::array<std::string_view, 4> kHertz{"MHz", "GHz", "THz", "PHz"};
constexpr std::array<std::string_view, 5> kBits{"bit/s", "kbit/s", "Mbit/s", "Gbit/s", "Tbit/s"};

// Smaller numbers of bytes are shown exactly: sizes of blocks and packets are known by them.
constexpr std::uint64_t kExactBytes = 100'000;

// The number in the greatest unit of which it is at least one, rounded to a fraction of that unit, without zeros at the end.
std::string scaled(std::uint64_t number, std::uint64_t step, std::span<const std::string_view> units,
                   std::uint64_t fraction) {
    std::uint64_t divisor = 1;
    std::size_t unit = 0;
    // In fractions of the unit. No product overflows: the greatest divisor is below 2^51.
    const auto rounded = [&] {
        return number / divisor * fraction + (number % divisor * fraction + divisor / 2) / divisor;
    };
    while (unit + 1 < units.size() && rounded() >= step * fraction) {
        divisor *= step;
        ++unit;
    }
    std::string text = std::to_string(rounded() / fraction);
    if (rounded() % fraction != 0) {
        std::string digits = std::to_string(fraction + rounded() % fraction).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += "." + digits;
    }
    return text.append(" ").append(units[unit]);
}

}  // namespace

std::string readableValue(const Field& field, std::string_view value) {
    std::string exact(value);
    if (value.empty() || field.unit.empty() || field.list || field.type != Type::Count ||
        !hasForm(field, value))
        return exact;
    std::uint64_t number = 0;
    std::from_chars(value.data(), value.data() + value.size(), number);
    constexpr std::uint64_t kTenths = 10;
    constexpr std::uint64_t kHundredths = 100;
    if (field.unit == "KiB") return scaled(number, kBinaryStep, std::span(kBinaryBytes).subspan(1), kTenths);
    if (field.unit == "bytes") {
        if (field.binary) return scaled(number, kBinaryStep, kBinaryBytes, kTenths);
        if (number < kExactBytes) return exact + " B";
        return scaled(number, kDecimalStep, kBytes, kTenths);
    }
    if (field.unit == "MHz") return scaled(number, kDecimalStep, kHertz, kHundredths);
    if (field.unit == "bit/s") return scaled(number, kDecimalStep, kBits, kTenths);
    if (field.unit == "percent") return exact + " %";
    // The others are shares of something.
    if (field.unit.find_first_of("0123456789") != std::string_view::npos) return exact;
    return exact + " " + std::string(field.unit);
}

}  // namespace schema
