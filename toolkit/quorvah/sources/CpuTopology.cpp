#include "toolkit/quorvah/sources/CpuTopology.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>

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
    std::vector<int> cpus = readCpuList(root.readLine(kCpus + "present"));
    if (cpus.empty()) cpus = numberedEntries(root, kCpus, "cpu");
    if (cpus.empty()) cpus = readCpuList(root.readLine(kCpus + "possible"));
    if (cpus.empty()) cpus = readCpuList(root.readLine(kCpus + "online"));
    if (cpus.empty()) cpus = info.cpus();
    // A file without numbers describes the only processor.
    if (cpus.empty() && !info.architecture().empty()) cpus = {0};
    return cpus;
}

// An id. The kernel writes -1 for none, some kernels as an unsigned number of 16 or 32 bits.
Count readId(const Root& root, const std::string& path) {
    const Count id = root.readCount(path);
    const bool none = !id || *id == 0xFFFF || *id == 0xFFFFFFFF;
    return none ? std::nullopt : id;
}

// An id in sysfs, or else in /proc/cpuinfo.
Count readId(const Root& root, const std::string& path, const CpuInfo& info, int cpu,
             std::initializer_list<std::string_view> keys) {
    Count id = readId(root, path);
    for (const std::string_view key : keys) {
        if (!id) id = readCount(info.value(cpu, key));
    }
    return id;
}

void readTopology(const Root& root, const CpuInfo& info, const std::string& directory, LogicalCpu& cpu) {
    cpu.drawer = readId(root, directory + "drawer_id", info, cpu.number, {"drawer id"});
    cpu.book = readId(root, directory + "book_id", info, cpu.number, {"book id"});
    cpu.package =
        readId(root, directory + "physical_package_id", info, cpu.number, {"physical id", "package"});
    cpu.die = readId(root, directory + "die_id");
    cpu.cluster = readId(root, directory + "cluster_id");
    cpu.core = readId(root, directory + "core_id", info, cpu.number, {"core id", "core"});
    std::vector<int> siblings = readCpuSet(root, directory + "core_cpus_list", directory + "core_cpus");
    // The names of the files before Linux 5.3.
    if (siblings.empty())
        siblings = readCpuSet(root, directory + "thread_siblings_list", directory + "thread_siblings");
    const auto self = std::ranges::find(siblings, cpu.number);
    if (self == siblings.end()) return;
    cpu.siblings = cpuListText(siblings);
    cpu.thread = static_cast<int>(self - siblings.begin());
}

using CorePlace = std::tuple<Count, Count, Count>;

CorePlace placeOf(const LogicalCpu& cpu) {
    return {cpu.package, cpu.die, cpu.core};
}

// Completes the cores of CPUs for which the kernel does not list the threads: they are in the core with the same ids.
void joinCores(std::vector<LogicalCpu>& cpus) {
    std::map<CorePlace, std::string> known;
    std::map<CorePlace, std::vector<LogicalCpu*>> unlisted;
    for (LogicalCpu& cpu : cpus) {
        if (!cpu.siblings.empty()) {
            known.emplace(placeOf(cpu), cpu.siblings);
        } else if (cpu.core) {
            unlisted[placeOf(cpu)].push_back(&cpu);
        }
    }
    for (const auto& [place, threads] : unlisted) {
        const auto core = known.find(place);
        std::vector<int> numbers;
        for (const LogicalCpu* const cpu : threads) numbers.push_back(cpu->number);
        const std::string own = cpuListText(numbers);
        for (std::size_t i = 0; i < threads.size(); ++i) {
            threads[i]->siblings = core != known.end() ? core->second : own;
            if (core == known.end()) threads[i]->thread = static_cast<int>(i);
        }
    }
}

// Numbers the packages anew if those of several books or drawers have the same number.
void makePackagesUnique(std::vector<LogicalCpu>& cpus) {
    using Place = std::tuple<Count, Count, std::uint64_t>;
    std::map<Place, std::uint64_t> packages;
    std::set<std::uint64_t> ids;
    for (const LogicalCpu& cpu : cpus) {
        if (!cpu.package) continue;
        packages[{cpu.drawer, cpu.book, *cpu.package}] = 0;
        ids.insert(*cpu.package);
    }
    if (packages.size() == ids.size()) return;
    std::uint64_t next = 0;
    for (auto& [place, number] : packages) number = next++;
    for (LogicalCpu& cpu : cpus) {
        if (cpu.package) cpu.package = packages[{cpu.drawer, cpu.book, *cpu.package}];
    }
}

// Numbers the packages by the CPUs that they have, for kernels that tell these but no number. A kernel that knows neither
// gives each CPU or each core as a package of its own.
void numberPackages(const Root& root, std::vector<LogicalCpu>& cpus) {
    const auto isNumbered = [](const LogicalCpu& cpu) { return cpu.package.has_value(); };
    if (std::ranges::any_of(cpus, isNumbered)) return;
    std::vector<std::string> sets;
    bool larger = false;  // than a core
    for (const LogicalCpu& cpu : cpus) {
        const std::string directory = kCpus + "cpu" + std::to_string(cpu.number) + "/topology/";
        std::vector<int> set = readCpuSet(root, directory + "package_cpus_list", directory + "package_cpus");
        // The names of the files before Linux 5.3.
        if (set.empty())
            set = readCpuSet(root, directory + "core_siblings_list", directory + "core_siblings");
        sets.push_back(cpuListText(set));
        larger = larger || set.size() > readCpuList(cpu.siblings).size();
        if (set.empty() && cpu.online.value_or(false)) return;
    }
    if (!larger) return;
    std::map<std::string, std::uint64_t> numbers;
    for (std::size_t i = 0; i < cpus.size(); ++i) {
        if (!sets[i].empty()) cpus[i].package = numbers.emplace(sets[i], numbers.size()).first->second;
    }
}

// The number of the first CPU in a list of the kernel.
Count firstOf(std::string_view list) {
    return readCount(list.substr(0, list.find_first_of(",-")));
}

// Some kernels number cores from 0 in each die, but do not tell the dies apart. The cores of such a package are numbered
// by their first CPUs.
void makeCoresUnique(std::vector<LogicalCpu>& cpus) {
    std::map<CorePlace, std::string_view> cores;
    std::set<Count> ambiguous;
    for (const LogicalCpu& cpu : cpus) {
        if (!cpu.core || cpu.siblings.empty()) continue;
        const auto [core, isNew] = cores.emplace(placeOf(cpu), cpu.siblings);
        if (!isNew && core->second != cpu.siblings) ambiguous.insert(cpu.package);
    }
    for (LogicalCpu& cpu : cpus) {
        if (!cpu.siblings.empty() && ambiguous.contains(cpu.package)) cpu.core = firstOf(cpu.siblings);
    }
}

// The CPUs of each NUMA node. The lists have the online CPUs, the entries of the directory all.
class Nodes {
  public:
    explicit Nodes(const Root& root) {
        for (const int node : numberedEntries(root, kNodes, "node")) {
            const std::string directory = kNodes + "node" + std::to_string(node) + "/";
            for (const int cpu : readCpuSet(root, directory + "cpulist", directory + "cpumap"))
                nodes_.emplace(cpu, node);
            for (const int cpu : numberedEntries(root, directory, "cpu")) nodes_.emplace(cpu, node);
        }
    }

    std::optional<int> of(int cpu) const {
        const auto found = nodes_.find(cpu);
        return found == nodes_.end() ? std::nullopt : std::optional(found->second);
    }

  private:
    std::unordered_map<int, int> nodes_;
};

std::optional<bool> isOnline(const Root& root, const CpuInfo& info, const std::vector<int>& online,
                             const LogicalCpu& cpu) {
    if (!online.empty()) return contains(online, cpu.number);
    const Count own = root.readCount(kCpus + "cpu" + std::to_string(cpu.number) + "/online");
    if (own) return *own != 0;
    if (info.lists(cpu.number) || !cpu.siblings.empty()) return true;
    return std::nullopt;
}

}  // namespace

std::vector<LogicalCpu> readCpus(const Root& root, const CpuInfo& info) {
    std::vector<LogicalCpu> cpus;
    const std::vector<int> online = readCpuList(root.readLine(kCpus + "online"));
    const Nodes nodes(root);
    for (const int number : presentCpus(root, info)) {
        LogicalCpu cpu;
        cpu.number = number;
        readTopology(root, info, kCpus + "cpu" + std::to_string(number) + "/topology/", cpu);
        cpu.online = isOnline(root, info, online, cpu);
        cpu.node = nodes.of(number);
        cpus.push_back(std::move(cpu));
    }
    makePackagesUnique(cpus);
    numberPackages(root, cpus);
    joinCores(cpus);
    makeCoresUnique(cpus);
    for (LogicalCpu& cpu : cpus)
        cpu.caches = readCaches(root, info, cpu.number, cpu.siblings, cpu.online.value_or(true));
    const auto hasCaches = [](const LogicalCpu& cpu) { return !cpu.caches.empty(); };
    if (!cpus.empty() && std::ranges::none_of(cpus, hasCaches)) {
        const std::vector<Cache> caches = deviceTreeCaches(root);
        for (LogicalCpu& cpu : cpus) cpu.caches = caches;
    }
    return cpus;
}

Count cacheSize(const LogicalCpu& cpu, int level, std::string_view type) {
    Count size;
    for (const Cache& cache : cpu.caches) {
        if (cache.level != level || (!type.empty() && cache.type != type)) continue;
        size = size ? sum(size, cache.size) : Count(cache.size);
    }
    return size;
}

}  // namespace toolkit::quorvah
