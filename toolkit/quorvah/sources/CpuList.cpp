#include "toolkit/quorvah/sources/CpuList.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "toolkit/machine/text/Checked.h"
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

std::vector<int> readCpuMask(std::string_view text) {
    constexpr std::size_t kGroupDigits = 8;
    constexpr int kGroupBits = 32;
    text = trimmed(text);
    if (text.starts_with("0x")) text.remove_prefix(2);
    std::vector<int> numbers;
    for (int base = 0; !text.empty(); base += kGroupBits) {
        if (base > kMaxCpuNumber) return {};
        const std::size_t comma = text.rfind(',');
        const std::string_view group = comma == std::string_view::npos ? text : text.substr(comma + 1);
        text = text.substr(0, comma == std::string_view::npos ? 0 : comma);
        const Count bits = group.size() <= kGroupDigits ? readCount(group, 16) : std::nullopt;
        if (!bits || comma == 0) return {};
        for (int bit = 0; bit < kGroupBits; ++bit) {
            if ((*bits >> static_cast<unsigned>(bit) & 1U) != 0) numbers.push_back(base + bit);
        }
    }
    return numbers;
}

std::vector<int> readCpuSet(const Root& root, const std::string& listFile, const std::string& maskFile) {
    std::vector<int> numbers = readCpuList(root.readLine(listFile));
    return numbers.empty() ? readCpuMask(root.readLine(maskFile)) : numbers;
}

std::string cpuListText(const std::vector<int>& sorted) {
    std::string text;
    for (auto first = sorted.begin(); first != sorted.end();) {
        auto last = first;
        while (last + 1 != sorted.end() && *(last + 1) == *last + 1) ++last;
        if (!text.empty()) text += ',';
        text += std::to_string(*first);
        if (last != first) text += "-" + std::to_string(*last);
        first = last + 1;
    }
    return text;
}

bool contains(const std::vector<int>& sorted, int number) {
    return std::ranges::binary_search(sorted, number);
}

}  // namespace toolkit::quorvah
