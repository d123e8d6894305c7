#include "toolkit/quorvah/sources/CpuList.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr int kMaxCpuNumber = 65535;

// Removes a number from the start of `text` and returns it.
std::optional<int> takeNumber(std::string_view& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0 || number > kMaxCpuNumber) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

// Adds the numbers of "3" or "3-5". Returns false for any other text.
bool addRange(std::string_view range, std::vector<int>& numbers) {
    const std::optional<int> first = takeNumber(range);
    if (!first) return false;
    std::optional<int> last = first;
    if (!range.empty() && range.front() == '-') {
        range.remove_prefix(1);
        last = takeNumber(range);
    }
    if (!last || *last < *first || !range.empty()) return false;
    for (int number = *first; number <= *last; ++number) numbers.push_back(number);
    return true;
}

}  // namespace

std::vector<int> readCpuList(std::string_view text) {
    std::vector<int> numbers;
    for (std::string_view rest = trimmed(text); !rest.empty();) {
        if (!addRange(takeField(rest, ','), numbers)) return {};
        // Longer than any list of the kernel: the ranges overlap.
        if (numbers.size() > 2 * static_cast<std::size_t>(kMaxCpuNumber)) return {};
    }
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

bool contains(const std::vector<int>& sorted, int number) {
    return std::ranges::binary_search(sorted, number);
}

}  // namespace toolkit::quorvah
