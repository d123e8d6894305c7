#include "toolkit/quorvah/sources/CpuPackages.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <unordered_map>

#include "toolkit/quorvah/sources/DeviceTree.h"

namespace toolkit::quorvah {

namespace {

using Ids = std::vector<const LogicalCpu*>;

bool isOffline(const LogicalCpu& cpu) {
    return cpu.online == false;
}

// What /sys/devices/system/cpu/smt/control tells: "on", "off", "forceoff", "notsupported", "notimplemented" or the number
// of threads in use.
struct Multithreading {
    bool possible = false;
    bool off = false;

    explicit Multithreading(const Root& root) {
        const std::string control = root.readLine("/sys/devices/system/cpu/smt/control");
        off = control == "off" || control == "forceoff";
        possible = off || control == "on" || readCount(control).value_or(0) > 1;
    }
};

// The packages of the CPUs of each NUMA node. Empty if the machine has a single node, because then CPUs of any package may
// be in it.
std::map<int, std::set<std::uint64_t>> packagesOfNodes(const std::vector<LogicalCpu>& cpus) {
    std::map<int, std::set<std::uint64_t>> packages;
    for (const LogicalCpu& cpu : cpus) {
        if (!cpu.node) continue;
        std::set<std::uint64_t>& ofNode = packages[*cpu.node];
        if (cpu.package) ofNode.insert(*cpu.package);
    }
    if (packages.size() < 2) packages.clear();
    return packages;
}

// The threads of each core. A core is identified by its CPUs, because core ids repeat across dies.
struct Core {
    std::uint64_t online = 0;
    std::uint64_t present = 0;
};
using Cores = std::unordered_map<std::string, Core>;

Cores coresOf(const Ids& cpus) {
    Cores cores;
    for (const LogicalCpu* const cpu : cpus) {
        if (cpu->siblings.empty()) continue;
        Core& core = cores[cpu->siblings];
        ++core.present;
        if (!isOffline(*cpu)) ++core.online;
    }
    return cores;
}

class Placement {
  public:
    Placement(const Root& root, const std::vector<LogicalCpu>& cpus, std::size_t sockets)
        : root_(root), threads_(root), sockets_(sockets) {
        placeStated(cpus);
        if (packages_.empty()) {
            placeAllInOne(cpus);
        } else {
            placeByNode(cpus);
            placeRest();
        }
    }

    std::vector<CpuPackage> take() {
        std::vector<CpuPackage> packages;
        for (const auto& [id, known] : packages_) packages.push_back(counted(id, known));
        return packages;
    }

  private:
    struct Known {
        Ids cpus;
        Count present;  // missing if there may be more
    };

    static std::uint64_t onlineOf(const Known& package) {
        return static_cast<std::uint64_t>(
            std::ranges::count_if(package.cpus, [](const LogicalCpu* cpu) { return !isOffline(*cpu); }));
    }

    void placeStated(const std::vector<LogicalCpu>& cpus) {
        for (const LogicalCpu& cpu : cpus) {
            if (cpu.package) packages_[*cpu.package].cpus.push_back(&cpu);
        }
    }

    void placeAllInOne(const std::vector<LogicalCpu>& cpus) {
        for (const LogicalCpu& cpu : cpus) packages_[0].cpus.push_back(&cpu);
        for (auto& [id, package] : packages_) package.present = package.cpus.size();
    }

    void placeByNode(const std::vector<LogicalCpu>& cpus) {
        const std::map<int, std::set<std::uint64_t>> ofNodes = packagesOfNodes(cpus);
        for (const LogicalCpu& cpu : cpus) {
            if (cpu.package) continue;
            const auto node = cpu.node ? ofNodes.find(*cpu.node) : ofNodes.end();
            if (node == ofNodes.end() || node->second.size() > 1) {
                ++rest_;
            } else if (node->second.size() == 1) {
                packages_[*node->second.begin()].cpus.push_back(&cpu);
            }  // else its package is wholly offline
        }
    }

    // Decides about the CPUs whose node does not tell their package.
    void placeRest() {
        if (rest_ == 0) {
            for (auto& [id, package] : packages_) package.present = package.cpus.size();
            return;
        }
        std::uint64_t online = 0;
        std::uint64_t fewest = UINT64_MAX;
        std::uint64_t all = rest_;
        for (const auto& [id, package] : packages_) {
            online += onlineOf(package);
            fewest = std::min(fewest, onlineOf(package));
            all += package.cpus.size();
        }
        if (threads_.off && online > 0 && all % online == 0) {
            for (auto& [id, package] : packages_) package.present = onlineOf(package) * (all / online);
        } else if (isOnlyPackage() || sockets_ == packages_.size() || rest_ < fewest) {
            shareEqually(all);
        }
    }

    // A device tree lists the sockets if there are several.
    bool isOnlyPackage() const {
        const std::string map = deviceTree(root_) + "cpus/cpu-map";
        return packages_.size() == 1 && root_.exists(map) && !root_.exists(map + "/socket1");
    }

    void shareEqually(std::uint64_t all) {
        const std::uint64_t share = all / packages_.size();
        const bool equal =
            all % packages_.size() == 0 && std::ranges::all_of(packages_, [share](const auto& entry) {
                return entry.second.cpus.size() <= share;
            });
        if (!equal) return;
        for (auto& [id, package] : packages_) package.present = share;
    }

    CpuPackage counted(std::uint64_t id, const Known& known) const {
        CpuPackage package;
        package.id = id;
        package.processors = known.present;
        countCores(known, package);
        package.cpus = known.cpus;
        return package;
    }

    void countCores(const Known& known, CpuPackage& package) const {
        const Cores cores = coresOf(known.cpus);
        const auto online = static_cast<std::uint64_t>(
            std::ranges::count_if(cores, [](const auto& core) { return core.second.online > 0; }));
        std::uint64_t listed = 0;
        std::uint64_t threads = 0;
        for (const auto& [siblings, core] : cores) {
            listed += core.present;
            threads = std::max(threads, core.present);
        }
        const bool allOffline =
            std::ranges::all_of(known.cpus, [](const LogicalCpu* cpu) { return isOffline(*cpu); });
        if (online > 0 || allOffline) package.enabledCores = online;
        if (cores.empty()) return;
        const Count present = known.present;
        if (threads == 1 && present && threads_.off && online > 0 && *present % online == 0)
            threads = *present / online;
        if (threads == 1 && threads_.possible && !threads_.off && present != listed) threads = 2;
        package.threadsPerCore = threads;
        if (present == listed) package.cores = cores.size();
        if (!present || *present == listed) return;
        package.cores = coresWithOffline(cores, *present - listed, threads);
    }

    // Whether the cores differ. Not all kernels tell, but cores of another kind have another clock.
    bool hasSeveralKinds() const {
        if (root_.exists("/sys/devices/cpu_atom")) return true;
        std::set<std::uint64_t> clocks;
        for (const auto& [id, package] : packages_) {
            for (const LogicalCpu* const cpu : package.cpus) {
                const std::string directory = "/sys/devices/system/cpu/cpu" + std::to_string(cpu->number);
                if (const Count clock = root_.readCount(directory + "/cpufreq/cpuinfo_max_freq"))
                    clocks.insert(*clock);
            }
        }
        return clocks.size() > 1;
    }

    // Adds to the cores those of `offline` further CPUs, where cores have `threads` threads.
    Count coresWithOffline(const Cores& cores, std::uint64_t offline, std::uint64_t threads) const {
        std::uint64_t gaps = 0;
        for (const auto& [siblings, core] : cores) gaps += threads - std::min(threads, core.present);
        if (threads_.off) return cores.size();
        // Cores of another kind may have a single thread, so that it is unknown which cores miss one.
        if (gaps > 0 && hasSeveralKinds()) return std::nullopt;
        if (gaps == offline) return cores.size();
        const std::uint64_t all = offline + cores.size() * threads - gaps;
        return all % threads == 0 ? Count(all / threads) : std::nullopt;
    }

    const Root& root_;
    Multithreading threads_;
    std::size_t sockets_;
    std::map<std::uint64_t, Known> packages_;
    std::uint64_t rest_ = 0;
};

}  // namespace

std::vector<CpuPackage> packagesOf(const Root& root, const std::vector<LogicalCpu>& cpus,
                                   std::size_t sockets) {
    if (cpus.empty()) return {};
    return Placement(root, cpus, sockets).take();
}

}  // namespace toolkit::quorvah
