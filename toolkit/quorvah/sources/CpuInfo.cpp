#include "toolkit/quorvah/sources/CpuInfo.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr int kMaxCpuNumber = 65535;
constexpr std::size_t kMaxLines = 64;  // per CPU; the kernel writes about half as many

std::optional<int> cpuNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (number < 0 || number > kMaxCpuNumber) return std::nullopt;
    return number;
}

bool hasWord(std::string_view words, std::string_view wanted) {
    for (std::string_view word = nextWord(words); !word.empty(); word = nextWord(words)) {
        if (word == wanted) return true;
    }
    return false;
}

}  // namespace

CpuInfo::CpuInfo(std::string text) : text_(std::move(text)) {
    std::string_view rest = text_;
    for (std::string_view line; nextLine(rest, line);) addLine(line);
}

void CpuInfo::addLine(std::string_view line) {
    if (trimmed(line).empty()) {
        current_ = &common_;
        return;
    }
    std::string_view value = line;
    const std::string_view key = trimmed(takeField(value, ':'));
    value = trimmed(value);
    // A block starts with "processor", or with "cpu number" on s390x. The "processor 0" of s390x is a common line. Some
    // kernels for ARM start with a "Processor" whose value is a name.
    if (key == "processor" || key == "cpu number") {
        const std::optional<int> number = cpuNumber(value);
        if (number) current_ = &blocks_[*number];
    }
    if (current_->size() < kMaxLines) current_->emplace_back(key, value);
}

std::vector<int> CpuInfo::cpus() const {
    std::vector<int> numbers;
    for (const auto& [number, block] : blocks_) numbers.push_back(number);
    return numbers;
}

std::string_view CpuInfo::find(const Block& block, std::string_view key) {
    const auto found = std::ranges::find(block, key, [](const auto& line) { return line.first; });
    return found == block.end() ? std::string_view() : found->second;
}

std::string_view CpuInfo::value(int cpu, std::string_view key) const {
    const auto block = blocks_.find(cpu);
    if (block == blocks_.end()) return {};
    const std::string_view own = find(block->second, key);
    return own.empty() ? find(common_, key) : own;
}

std::string_view CpuInfo::architecture() const {
    if (blocks_.empty()) return {};
    const int first = blocks_.begin()->first;
    const std::string_view flags = value(first, "flags");
    if (!flags.empty()) return hasWord(flags, "lm") ? "x86_64" : "i686";
    if (value(first, "CPU architecture") == "8") return "aarch64";
    if (value(first, "vendor_id") == "IBM/S390") return "s390x";
    const std::string_view isa = value(first, "isa");
    if (isa.starts_with("rv64")) return "riscv64";
    return isa.starts_with("rv32") ? "riscv32" : "";
}

}  // namespace toolkit::quorvah
