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

    // The numbers of the listed CPUs, ascending. A kernel that describes all CPUs at once lists them by lines such as
    // "processor 0: version = FF" (s390x), "CPU0: online" or "Cpu0ClkTck" (SPARC), or not at all.
    std::vector<int> cpus() const;
    bool lists(int cpu) const { return blocks_.contains(cpu); }

    // The value of a key ("model name") for a CPU, or else for all CPUs; empty if there is none. A CPU that is not listed
    // has values only if none is listed.
    std::string_view value(int cpu, std::string_view key) const;
    // The same for the first CPU that is listed, or for all.
    std::string_view value(std::string_view key) const;

    // The machine's architecture as uname reports it; empty if it cannot be determined.
    std::string architecture() const;

  private:
    using Block = std::vector<std::pair<std::string_view, std::string_view>>;

    void addLine(std::string_view line);
    void listCpu(std::string_view key, std::string_view value);
    static std::string_view find(const Block& block, std::string_view key);

    std::string text_;
    Block common_;
    std::map<int, Block> blocks_;
    Block* current_ = &common_;
    bool atStart_ = true;  // of a paragraph
};

}  // namespace toolkit::quorvah
