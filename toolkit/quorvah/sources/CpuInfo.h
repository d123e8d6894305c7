#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toolkit::quorvah {

// /proc/cpuinfo of any architecture.
class CpuInfo {
  public:
    explicit CpuInfo(std::string text);
    CpuInfo(const CpuInfo&) = delete;
    CpuInfo& operator=(const CpuInfo&) = delete;

    // The numbers of the CPUs that it lists, ascending.
    std::vector<int> cpus() const;
    bool lists(int cpu) const { return blocks_.contains(cpu); }

    // What it says of a CPU under a key ("model name"), or of all CPUs together; empty when it says nothing.
    std::string_view value(int cpu, std::string_view key) const;

    // The machine's name as uname has it, as far as the content gives that away; else empty.
    std::string_view architecture() const;

  private:
    using Block = std::vector<std::pair<std::string_view, std::string_view>>;

    void addLine(std::string_view line);
    static std::string_view find(const Block& block, std::string_view key);

    std::string text_;
    Block common_;
    std::map<int, Block> blocks_;
    Block* current_ = &common_;
};

// The names that belong to the numbers in an arm64 machine's list, without "0x"; empty for unknown ones.
std::string_view armImplementer(std::string_view implementer);
std::string_view armPart(std::string_view implementer, std::string_view part);

}  // namespace toolkit::quorvah
