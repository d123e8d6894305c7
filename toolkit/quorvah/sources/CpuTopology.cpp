#include "toolkit/quorvah/sources/CpuTopology.h"

#include <algorithm>

#include "toolkit/quorvah/sources/CpuList.h"

namespace toolkit::quorvah {

namespace {

const std::string kCpus = "/sys/devices/system/cpu/";
const std::string kNodes = "/sys/devices/system/node/";

// The number after a prefix: 12 for "cpu12".
std::optional<int> numberBehind(std::string_view prefix, std::string_view name) {
    if (!name.starts_with(prefix)) return std::nullopt;
    const std::vector<int> numbers = readCpuList(name.substr(prefix.size()));
    return numbers.size() == 1 ? std::optional(numbers.front()) : std::nullopt;
}

// The numbers of the entries "<prefix>N" in a directory, sorted.
std::vector<int> numberedEntries(const Root& root, const std::string& directory, std::string_view prefix) {
    std::vector<int> numbers;
    for (const std::string& name : root.list(directory)) {
        const std::optional<int> number = numberBehind(prefix, name);
        if (number) numbers.push_back(*number);
    }
    std::ranges::sort(numbers);
    return numbers;
}

std::vector<int> presentCpus(const Root& root, const CpuInfo& info) {
    for (const char* const file : {"present", "possible"}) {
        std::vector<int> cpus = readCpuList(root.readLine(kCpus + file));
        if (!cpus.empty()) return cpus;
    }
    std::vector<int> cpus = numberedEntries(root, kCpus, "cpu");
    return cpus.empty() ? info.cpus() : cpus;
}

// An id. The kernel writes -1 for none, and 65535 for no cluster.
Count readId(const Root& root, const std::string& path) {
    const Count id = root.readCount(path);
    return id != 65535 ? id : std::nullopt;
}

// The size in KiB of "32K", "1024K" or "8M".
std::uint64_t readCacheSize(std::string_view text) {
    const bool kibibytes = text.ends_with('K');
    const bool mebibytes = text.ends_with('M');
    if (kibibytes || mebibytes) text.remove_suffix(1);
    const Count size = product(readCount(text), mebibytes ? 1024 : 1);
    return kibibytes || mebibytes ? size.value_or(0) : size.value_or(0) / 1024;
}

int levelOf(Count number) {
    constexpr std::uint64_t kMaxLevel = 9;
    return number && *number <= kMaxLevel ? static_cast<int>(*number) : 0;
}

std::vector<Cache> readCaches(const Root& root, const std::string& directory) {
    std::vector<Cache> caches;
    for (const std::string& name : root.list(directory)) {
        if (!name.starts_with("index")) continue;
        const std::string index = directory + name + "/";
        Cache cache;
        cache.level = levelOf(root.readCount(index + "level"));
        cache.type = root.readLine(index + "type");
        cache.size = readCacheSize(root.readLine(index + "size"));
        cache.sharedCpus = root.readLine(index + "shared_cpu_list");
        if (cache.size > 0) caches.push_back(std::move(cache));
    }
    return caches;
}

void readTopology(const Root& root, const std::string& directory, LogicalCpu& cpu) {
    cpu.package = readId(root, directory + "physical_package_id");
    cpu.die = readId(root, directory + "die_id");
    cpu.cluster = readId(root, directory + "cluster_id");
    cpu.core = readId(root, directory + "core_id");
    cpu.siblings = root.readLine(directory + "core_cpus_list");
    // The name of the file before Linux 5.3.
    if (cpu.siblings.empty()) cpu.siblings = root.readLine(directory + "thread_siblings_list");
    const std::vector<int> siblings = readCpuList(cpu.siblings);
    const auto self = std::ranges::find(siblings, cpu.number);
    if (self == siblings.end()) {
        cpu.siblings.clear();
        return;
    }
    cpu.thread = static_cast<int>(self - siblings.begin());
}

// The CPUs of each NUMA node.
class Nodes {
  public:
    explicit Nodes(const Root& root) {
        for (const int node : numberedEntries(root, kNodes, "node")) {
            const std::string list = root.readLine(kNodes + "node" + std::to_string(node) + "/cpulist");
            nodes_.push_back({node, readCpuList(list)});
        }
    }

    std::optional<int> of(int cpu) const {
        for (const Node& node : nodes_) {
            if (contains(node.cpus, cpu)) return node.number;
        }
        return std::nullopt;
    }

  private:
    struct Node {
        int number;
        std::vector<int> cpus;
    };
    std::vector<Node> nodes_;
};

}  // namespace

std::vector<LogicalCpu> readCpus(const Root& root, const CpuInfo& info) {
    std::vector<LogicalCpu> cpus;
    const std::vector<int> online = readCpuList(root.readLine(kCpus + "online"));
    const Nodes nodes(root);
    for (const int number : presentCpus(root, info)) {
        LogicalCpu cpu;
        cpu.number = number;
        const std::string directory = kCpus + "cpu" + std::to_string(number) + "/";
        if (!online.empty()) {
            cpu.online = contains(online, number);
        } else if (const auto own = root.readCount(directory + "online")) {
            cpu.online = *own != 0;
        } else if (info.lists(number)) {
            cpu.online = true;
        }
        readTopology(root, directory + "topology/", cpu);
        if (!cpu.package) cpu.package = readCount(info.value(number, "physical id"));
        if (!cpu.core) cpu.core = readCount(info.value(number, "core id"));
        cpu.node = nodes.of(number);
        cpu.caches = readCaches(root, directory + "cache/");
        cpus.push_back(std::move(cpu));
    }
    return cpus;
}

Count cacheSize(const LogicalCpu& cpu, int level, std::string_view type) {
    for (const Cache& cache : cpu.caches) {
        if (cache.level == level && (type.empty() || cache.type == type)) return cache.size;
    }
    return std::nullopt;
}

}  // namespace toolkit::quorvah
