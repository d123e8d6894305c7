#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toolkit::quorvah {

// /proc/cpuinfo on any architecture.
class CpuInfo {
  public:
    explicit CpuInfo(std::string text);
    CpuInfo(const CpuInfo&) = delete;
    CpuInfo& operator=(const CpuInfo&) = delete;

    // The numbers of the listed CPUs, ascending.
    std::vector<int> cpus() const;
    bool lists(int cpu) const { return blocks_.contains(cpu); }

    // The value of a key ("model name") for a CPU, or else for all CPUs; empty if there is none.
    std::string_view value(int cpu, std::string_view key) const;

    // The machine's architecture as uname reports it; empty if it cannot be determined.
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

}  // namespace toolkit::quorvah
