#include "toolkit/quorvah/sources/CpuCaches.h"

#include <string_view>
#include <utility>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/CpuList.h"
#include "toolkit/quorvah/sources/DeviceTree.h"

namespace toolkit::quorvah {

namespace {

constexpr int kMaxCachesListed = 16;

// The size in KiB of "32K", "1024K", "8M" or a number of bytes.
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

// The size in KiB that results from the geometry, for kernels that do not state it.
std::uint64_t sizeByGeometry(const Root& root, const std::string& index) {
    const Count line = root.readCount(index + "coherency_line_size");
    const Count sets = root.readCount(index + "number_of_sets");
    const Count ways = root.readCount(index + "ways_of_associativity");
    return product(product(line, sets), ways).value_or(0) / 1024;
}

std::string instanceOf(const Root& root, const std::string& index) {
    const std::vector<int> sharers = readCpuSet(root, index + "shared_cpu_list", index + "shared_cpu_map");
    if (!sharers.empty()) return cpuListText(sharers);
    const Count id = root.readCount(index + "id");
    return id ? "#" + std::to_string(*id) : std::string();
}

std::vector<Cache> fromIndexes(const Root& root, const std::string& directory) {
    std::vector<Cache> caches;
    for (const std::string& name : root.list(directory)) {
        if (!name.starts_with("index")) continue;
        const std::string index = directory + name + "/";
        Cache cache;
        cache.level = levelOf(root.readCount(index + "level"));
        cache.type = root.readLine(index + "type");
        cache.size = readCacheSize(root.readLine(index + "size"));
        if (cache.size == 0) cache.size = sizeByGeometry(root, index);
        if (cache.size == 0) continue;
        cache.instance = instanceOf(root, index);
        caches.push_back(std::move(cache));
    }
    return caches;
}

// The files of SPARC, which have sizes in bytes.
std::vector<Cache> fromSparcFiles(const Root& root, const std::string& directory) {
    const struct {
        const char* file;
        int level;
        const char* type;
    } files[] = {
        {"l1_dcache_size", 1, "Data"}, {"l1_icache_size", 1, "Instruction"}, {"l2_cache_size", 2, "Unified"}};
    std::vector<Cache> caches;
    for (const auto& [file, level, type] : files) {
        const std::uint64_t size = root.readCount(directory + file).value_or(0) / 1024;
        if (size > 0) caches.push_back({level, type, size, {}});
    }
    return caches;
}

// The value of a word such as "level=1" in a line.
std::string_view wordValue(std::string_view line, std::string_view key) {
    for (std::string_view word = nextWord(line); !word.empty(); word = nextWord(line)) {
        if (takeField(word, '=') == key) return word;
    }
    return {};
}

// The lines of s390x, such as
//     cache2 : level=2 type=Data scope=Private size=4096K line_size=256 associativity=8
// A private cache is that of a core.
std::vector<Cache> fromCacheLines(const CpuInfo& info, int cpu, const std::string& siblings) {
    std::vector<Cache> caches;
    for (int i = 0; i < kMaxCachesListed; ++i) {
        const std::string_view line = info.value(cpu, "cache" + std::to_string(i));
        if (line.empty()) break;
        Cache cache;
        cache.level = levelOf(readCount(wordValue(line, "level")));
        cache.type = wordValue(line, "type");
        cache.size = readCacheSize(wordValue(line, "size"));
        const bool ofCore = wordValue(line, "scope") == "Private";
        if (ofCore) cache.instance = siblings.empty() ? std::to_string(cpu) : siblings;
        if (cache.size > 0) caches.push_back(std::move(cache));
    }
    return caches;
}

// The line of Power Macintosh computers: "L2 cache : 512K unified".
std::vector<Cache> fromLevelLines(const CpuInfo& info, int cpu) {
    std::vector<Cache> caches;
    for (const int level : {2, 3}) {
        std::string_view line = info.value(cpu, "L" + std::to_string(level) + " cache");
        const std::uint64_t size = readCacheSize(nextWord(line));
        if (size > 0) caches.push_back({level, "Unified", size, {}});
    }
    return caches;
}

// A size in bytes, which a property of a device tree has in big-endian bytes, in KiB.
std::uint64_t sizeProperty(const Root& root, const std::string& path) {
    const std::string bytes = root.read(path, 64).value_or("");
    if (bytes.size() != 4 && bytes.size() != 8) return 0;
    return bigEndian(bytes, 0, bytes.size()) / 1024;
}

// Collects sizes that must be equal.
class CommonSize {
  public:
    void add(std::uint64_t size) {
        if (size == 0) return;
        differ_ = differ_ || (size_ != 0 && size_ != size);
        size_ = size;
    }
    std::uint64_t size() const { return differ_ ? 0 : size_; }

  private:
    std::uint64_t size_ = 0;
    bool differ_ = false;
};

}  // namespace

std::vector<Cache> deviceTreeCaches(const Root& root) {
    const std::string tree = deviceTree(root);
    CommonSize data;
    CommonSize instructions;
    CommonSize unified[2];
    for (const std::string& folder : {tree + "cpus/", tree}) {
        for (const std::string& name : root.list(folder)) {
            const std::string node = folder + name + "/";
            const std::size_t level = name.starts_with("l2-cache") ? 2 : name.starts_with("l3-cache") ? 3 : 0;
            if (level != 0) {
                unified[level - 2].add(sizeProperty(root, node + "cache-size"));
                unified[level - 2].add(sizeProperty(root, node + "d-cache-size"));
            } else if (folder != tree && name.find('@') != std::string::npos) {
                data.add(sizeProperty(root, node + "d-cache-size"));
                instructions.add(sizeProperty(root, node + "i-cache-size"));
            }
        }
    }
    std::vector<Cache> caches;
    if (data.size() > 0) caches.push_back({1, "Data", data.size(), {}});
    if (instructions.size() > 0) caches.push_back({1, "Instruction", instructions.size(), {}});
    for (int level = 2; level <= 3; ++level) {
        const std::uint64_t size = unified[level - 2].size();
        if (size > 0) caches.push_back({level, "Unified", size, {}});
    }
    return caches;
}

std::vector<Cache> readCaches(const Root& root, const CpuInfo& info, int cpu, const std::string& siblings,
                              bool online) {
    const std::string directory = "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/";
    std::vector<Cache> caches = fromIndexes(root, directory + "cache/");
    if (caches.empty()) caches = fromSparcFiles(root, directory);
    if (caches.empty() && online) caches = fromCacheLines(info, cpu, siblings);
    if (caches.empty() && online) caches = fromLevelLines(info, cpu);
    return caches;
}

}  // namespace toolkit::quorvah
