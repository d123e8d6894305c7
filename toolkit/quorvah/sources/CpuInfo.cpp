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
        atStart_ = true;
        return;
    }
    std::string_view value = line;
    const std::string_view key = trimmed(takeField(value, ':'));
    value = trimmed(value);
    // A block starts with "processor", or with "cpu number" on s390x. The "cpu number" of IA-64 is inside of a block. Some
    // kernels for ARM start with a "Processor" whose value is a name.
    if (key == "processor" || (key == "cpu number" && atStart_)) {
        const std::optional<int> number = cpuNumber(value);
        if (number) current_ = &blocks_[*number];
    } else {
        listCpu(key, value);
    }
    atStart_ = false;
    if (current_->size() < kMaxLines) current_->emplace_back(key, value);
}

void CpuInfo::listCpu(std::string_view key, std::string_view value) {
    const auto list = [this](std::string_view number) {
        if (const std::optional<int> cpu = cpuNumber(number)) blocks_[*cpu];
    };
    if (key.starts_with("processor ")) list(key.substr(10));
    if (key.starts_with("CPU") && value == "online") list(key.substr(3));
    if (key.starts_with("Cpu") && key.ends_with("ClkTck")) list(key.substr(3, key.size() - 9));
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
    if (block == blocks_.end()) return blocks_.empty() ? find(common_, key) : std::string_view();
    const std::string_view own = find(block->second, key);
    return own.empty() ? find(common_, key) : own;
}

std::string_view CpuInfo::value(std::string_view key) const {
    return value(blocks_.empty() ? 0 : blocks_.begin()->first, key);
}

namespace {

// The "v7l" in "ARMv7 Processor rev 4 (v7l)", with which the name in uname ends.
std::string armVersion(std::string_view name) {
    const std::size_t open = name.rfind("(v");
    if (open == std::string_view::npos || !name.ends_with(')')) return {};
    return "arm" + std::string(name.substr(open + 1, name.size() - open - 2));
}

std::string armArchitecture(const CpuInfo& info) {
    const std::string_view version = info.value("CPU architecture");
    const std::string_view features = info.value("Features");
    const bool wide = version == "AArch64" || hasWord(features, "asimd") || hasWord(features, "cpuid");
    if (wide || (version == "8" && features.empty())) return "aarch64";
    for (const char* const key : {"model name", "Processor"}) {
        std::string name = armVersion(info.value(key));
        if (!name.empty()) return name;
    }
    if (version == "8") return "armv8l";
    return version == "7" ? "armv7l" : "";
}

// Processors from POWER8 on run kernels of both byte orders, of which the file does not tell.
std::string powerArchitecture(std::string_view cpu) {
    for (const std::string_view name :
         {"POWER4", "POWER5", "POWER6", "POWER7", "PPC970", "Cell", "PA6T", "RS64"}) {
        if (cpu.starts_with(name)) return "ppc64";
    }
    for (const std::string_view name : {"60", "74", "75", "8", "e300", "e500v", "44", "46", "40"}) {
        if (cpu.starts_with(name)) return "ppc";
    }
    return {};
}

}  // namespace

std::string CpuInfo::architecture() const {
    const std::string_view flags = value("flags");
    if (!flags.empty()) return hasWord(flags, "lm") ? "x86_64" : "i686";
    if (!value("CPU architecture").empty()) return armArchitecture(*this);
    if (value("vendor_id") == "IBM/S390") return "s390x";
    if (value("arch") == "IA-64") return "ia64";
    const std::string_view type = value("type");
    if (type == "sun4u" || type == "sun4v") return "sparc64";
    if (type.starts_with("sun4")) return "sparc";
    if (hasWord(value("ISA"), "loongarch64")) return "loongarch64";
    if (hasWord(value("ISA"), "loongarch32")) return "loongarch32";
    if (value("cpu") == "Alpha") return "alpha";
    if (value("revision").find("(pvr") != std::string_view::npos) return powerArchitecture(value("cpu"));
    const std::string_view isa = value("isa");
    if (hasWord(isa, "loongarch64")) return "loongarch64";
    if (isa.starts_with("rv64")) return "riscv64";
    return isa.starts_with("rv32") ? "riscv32" : "";
}

}  // namespace toolkit::quorvah
