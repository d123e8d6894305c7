// This machine, as the usual programs show it.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/quorvah/sources/Words.h"

namespace toolkit::quorvah {
namespace {

using Rows = std::vector<std::string>;

std::string lineOf(const std::string& command) {
    const Rows lines = linesOf(command);
    return lines.empty() ? std::string() : lines.front();
}

// What stands between two texts, and all behind it is left in `text`; empty when they do not follow one
// another.
std::string takeBetween(std::string& text, const std::string& before, const std::string& behind) {
    const std::size_t begin = text.find(before);
    const std::size_t end = begin == std::string::npos ? begin : text.find(behind, begin + before.size());
    if (end == std::string::npos) {
        text.clear();
        return {};
    }
    std::string found = text.substr(begin + before.size(), end - begin - before.size());
    text.erase(0, end + behind.size());
    return found;
}

// NAME="value" pairs.
std::map<std::string, std::string> pairsOf(std::string line) {
    std::map<std::string, std::string> pairs;
    while (!line.empty()) {
        const std::string name = takeBetween(line, "", "=\"");
        pairs[name] = takeBetween(line, "", "\"");
        if (line.starts_with(' ')) line.erase(0, 1);
    }
    return pairs;
}

// The fields of "lscpu -J", whose names end with a colon.
std::map<std::string, std::string> lscpuFields() {
    std::string text;
    for (const std::string& line : linesOf("LC_ALL=C lscpu -J")) text += line + "\n";
    std::map<std::string, std::string> fields;
    for (;;) {
        const std::string name = takeBetween(text, "\"field\": \"", ":\"");
        if (text.empty()) return fields;
        fields.emplace(name, takeBetween(text, "\"data\": \"", "\""));
    }
}

// Whether a block device is made of others or of memory.
bool isMadeUp(const std::string& name) {
    const char* const prefixes[] = {"loop", "ram", "zram", "dm-", "md", "nbd", "fd"};
    return std::ranges::any_of(prefixes, [&name](const char* prefix) { return name.starts_with(prefix); });
}

std::size_t countDistinct(const Report& report, const std::string& field) {
    std::set<std::string> values;
    for (const Instance& instance : report.instances()) values.insert(instance.get(field));
    return values.size();
}

}  // namespace

TEST(LiveProcessors, AreThoseOfLscpu) {
    const std::map<std::string, std::string> fields = lscpuFields();
    const Report report = gatheredLive("Processor");
    ASSERT_FALSE(report.instances().empty());
    EXPECT_EQ(std::to_string(report.instances().size()), fields.at("CPU(s)"));
    std::string flags = report.instances().front().get("Flags");
    std::ranges::replace(flags, ';', ' ');
    const std::pair<const char*, const char*> names[] = {
        {"Name", "Model name"}, {"Manufacturer", "Vendor ID"}, {"Family", "CPU family"},
        {"Model", "Model"},     {"Stepping", "Stepping"},      {"Architecture", "Architecture"},
    };
    for (const auto& [ours, theirs] : names) {
        if (!fields.contains(theirs)) continue;
        EXPECT_EQ(report.instances().front().get(ours), fields.at(theirs)) << ours;
    }
    EXPECT_EQ(flags, fields.at("Flags"));
}

TEST(LiveProcessors, StandWhereLscpuPutsThem) {
    std::size_t rows = 0;
    const Report report = gatheredLive("Processor");
    std::map<std::string, std::set<std::string>> coresOfSockets;
    for (const std::string& line : linesOf("LC_ALL=C lscpu -a -p=CPU,CORE,SOCKET,NODE,ONLINE")) {
        if (line.starts_with('#')) continue;
        const Rows row = fieldsOf(line, ',');
        const Instance& cpu = instanceOf(report, "cpu" + row[0]);
        EXPECT_EQ(cpu.get("NumaNode"), row[3]);
        EXPECT_EQ(cpu.get("EnabledState"), row[4] == "Y" ? "Enabled" : "Disabled");
        if (row[4] == "Y") coresOfSockets[row[2]].insert(row[1]);
        ++rows;
    }
    EXPECT_EQ(rows, report.instances().size());
    const Report packages = gatheredLive("PhysicalProcessor");
    EXPECT_EQ(packages.instances().size(), coresOfSockets.size());
    std::multiset<std::string> ours;
    std::multiset<std::string> theirs;
    for (const Instance& package : packages.instances()) ours.insert(package.get("NumberOfEnabledCores"));
    for (const auto& [socket, cores] : coresOfSockets) theirs.insert(std::to_string(cores.size()));
    EXPECT_EQ(ours, theirs);
}

TEST(LiveProcessors, HaveTheCachesOfLscpu) {
    const Report processors = gatheredLive("Processor");
    const Report packages = gatheredLive("PhysicalProcessor");
    std::map<std::string, std::uint64_t> totals;
    for (const Instance& package : packages.instances()) {
        for (const char* const field : {"L2CacheSize", "L3CacheSize"}) {
            totals[field] += readLeadingCount(package.get(field)).value_or(0);
        }
    }
    std::size_t compared = 0;
    for (const std::string& line : linesOf("LC_ALL=C lscpu -B -C=NAME,ONE-SIZE,ALL-SIZE")) {
        const std::vector<std::string> row = wordsOf(line);
        if (row.size() != 3 || row[0] == "NAME") continue;
        const std::string field = row[0] + "CacheSize";
        if (field == "L4CacheSize") continue;
        EXPECT_EQ(std::stoll(processors.instances().front().get(field)) * 1024, std::stoll(row[1])) << field;
        if (totals.contains(field)) {
            EXPECT_EQ(totals[field] * 1024, std::stoull(row[2])) << field;
        }
        ++compared;
    }
    const bool anyCache = !processors.instances().front().get("L1dCacheSize").empty();
    EXPECT_EQ(compared > 0, anyCache);
}

TEST(LiveProcessors, ThreadsOfACoreAreNumberedFromZero) {
    const Report report = gatheredLive("Processor");
    const std::string threads = gatheredLive("PhysicalProcessor").instances().front().get("ThreadsPerCore");
    EXPECT_EQ(std::to_string(countDistinct(report, "ThreadIndex")), threads);
    EXPECT_EQ(lscpuFields().at("Thread(s) per core"), threads);
}

TEST(LiveGuest, IsWhatLscpuSeesOfIt) {
    const std::map<std::string, std::string> fields = lscpuFields();
    const Report report = gatheredLive("VirtualMachineGuest");
    ASSERT_EQ(report.instances().empty(), !fields.contains("Hypervisor vendor"));
    if (report.instances().empty()) return;
    EXPECT_EQ(report.instances().front().get("HypervisorVendor"), fields.at("Hypervisor vendor"));
    EXPECT_EQ(report.instances().front().get("VirtualizationMode"), fields.at("Virtualization type"));
}

TEST(LiveStorage, IsThatOfLsblk) {
    const Report report = gatheredLive("Storage");
    std::set<std::string> theirs;
    for (const std::string& line :
         linesOf("LC_ALL=C lsblk -b -d -P -o NAME,SIZE,RO,RM,PHY-SEC,LOG-SEC,TYPE")) {
        std::map<std::string, std::string> row = pairsOf(line);
        if (isMadeUp(row["NAME"]) || (row["TYPE"] != "disk" && row["TYPE"] != "rom")) continue;
        const Instance& disk = instanceOf(report, "/dev/" + row["NAME"]);
        EXPECT_EQ(disk.get("Size"), row["SIZE"]);
        EXPECT_EQ(disk.get("BlockSize"), row["LOG-SEC"]);
        EXPECT_EQ(disk.get("PhysicalBlockSize"), row["PHY-SEC"]);
        EXPECT_EQ(disk.get("ReadOnly"), row["RO"] == "1" ? "true" : "false");
        EXPECT_EQ(disk.get("Removable"), row["RM"] == "1" ? "true" : "false");
        theirs.insert("/dev/" + row["NAME"]);
    }
    const Rows keys = keysOf(report);
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()), theirs);
}

TEST(LivePartitions, AreThoseOfLsblk) {
    const Report report = gatheredLive("DiskPartition");
    std::set<std::string> theirs;
    for (const std::string& line : linesOf("LC_ALL=C lsblk -b -P -o NAME,SIZE,PKNAME,TYPE")) {
        std::map<std::string, std::string> row = pairsOf(line);
        if (row["TYPE"] != "part") continue;
        const Instance& partition = instanceOf(report, "/dev/" + row["NAME"]);
        EXPECT_EQ(partition.get("Size"), row["SIZE"]);
        EXPECT_EQ(partition.get("DiskName"), "/dev/" + row["PKNAME"]);
        theirs.insert("/dev/" + row["NAME"]);
    }
    const Rows keys = keysOf(report);
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()), theirs);
}

TEST(LiveOperatingSystem, IsThatOfTheReleaseFileAndUname) {
    const Report report = gatheredLive("OperatingSystem");
    ASSERT_EQ(report.instances().size(), 1U);
    const Instance& system = report.instances().front();
    const auto release = [](const std::string& name) {
        return lineOf(". /etc/os-release; echo \"$" + name + "\"");
    };
    EXPECT_EQ(system.get("Caption"), release("PRETTY_NAME"));
    EXPECT_EQ(system.get("OtherTypeDescription"), release("NAME"));
    EXPECT_EQ(system.get("Id"), release("ID"));
    EXPECT_EQ(system.get("VersionId"), release("VERSION_ID"));
    EXPECT_EQ(system.get("Codename"), release("VERSION_CODENAME"));
    EXPECT_EQ(system.get("Version"), lineOf("uname -r"));
    EXPECT_EQ(system.get("KernelVersion"), lineOf("uname -v"));
    EXPECT_EQ(system.get("Architecture"), lineOf("uname -m"));
    EXPECT_EQ(system.get("CSName"), lineOf("uname -n"));
}

TEST(LiveOperatingSystem, TimeIsThatOfDate) {
    const Report report = gatheredLive("OperatingSystem");
    const Instance& system = report.instances().front();
    const std::string boot = system.get("LastBootUpTime");
    EXPECT_LT(boot, lineOf("date -u +%Y-%m-%dT%H:%M:%SZ"));
    EXPECT_EQ(boot, lineOf("date -u -d @$(awk '/^btime/ {print $2}' /proc/stat) +%Y-%m-%dT%H:%M:%SZ"));
    const std::string zone = lineOf("env -u TZ date +%z");  // "+0130"
    const int sign = zone[0] == '-' ? -1 : 1;
    const int minutes = sign * (std::stoi(zone.substr(1, 2)) * 60 + std::stoi(zone.substr(3, 2)));
    EXPECT_EQ(system.get("CurrentTimeZone"), std::to_string(minutes));
    EXPECT_EQ(gatheredLive("Regional").instances().front().get("CurrentTimeZone"), std::to_string(minutes));
}

TEST(LiveUnixSystemParams, AreThoseOfUnameAndGetconf) {
    const Report report = gatheredLive("UNIXSystemParams");
    ASSERT_EQ(report.instances().size(), 1U);
    const Instance& system = report.instances().front();
    const std::pair<const char*, const char*> commands[] = {
        {"NodeName", "uname -n"},
        {"SystemName", "uname -s"},
        {"Release", "uname -r"},
        {"Version", "uname -v"},
        {"Machine", "uname -m"},
        {"PageSize", "getconf PAGE_SIZE"},
        {"OpenMax", "getconf OPEN_MAX"},
        {"ArgMax", "getconf ARG_MAX"},
        {"ChildMax", "getconf CHILD_MAX"},
        {"ClockTicksPerSecond", "getconf CLK_TCK"},
        {"ProcessorsConfigured", "getconf _NPROCESSORS_CONF"},
        {"ProcessorsOnline", "getconf _NPROCESSORS_ONLN"},
    };
    for (const auto& [field, command] : commands) EXPECT_EQ(system.get(field), lineOf(command)) << field;
}

TEST(LiveMemory, IsThatOfFree) {
    const Report report = gatheredLive("Memory");
    ASSERT_EQ(report.instances().size(), 1U);
    const Instance& memory = report.instances().front();
    std::map<std::string, Rows> rows;
    for (const std::string& line : linesOf("LC_ALL=C free -k")) {
        const Rows words = wordsOf(line);
        rows[words[0]] = words;
    }
    EXPECT_EQ(memory.get("TotalVisibleMemorySize"), rows["Mem:"][1]);
    EXPECT_EQ(memory.get("TotalSwapSpaceSize"), rows["Swap:"][1]);
    EXPECT_GE(std::stoll(memory.get("InstalledMemory")), std::stoll(rows["Mem:"][1]));
    EXPECT_LE(std::stoll(memory.get("FreePhysicalMemory")), std::stoll(rows["Mem:"][1]));
}

TEST(LiveComponentId, IsThatOfTheSystemsFiles) {
    const Report report = gatheredLive("ComponentID");
    ASSERT_EQ(report.instances().size(), 1U);
    EXPECT_EQ(report.instances().front().get("Name"), lineOf("uname -n"));
    EXPECT_EQ(report.instances().front().get("MachineId"), lineOf("cat /etc/machine-id 2>/dev/null || true"));
    EXPECT_EQ(report.instances().front().get("BootId"), lineOf("cat /proc/sys/kernel/random/boot_id"));
}

// The same files through the lookups that keep a tree's links inside of it.
TEST(LiveMachine, TellsTheSameWhenItIsScannedAsATree) {
    const std::pair<const char*, std::vector<const char*>> groups[] = {
        {"Processor", {"Name", "Family", "Flags", "NumaNode", "L2CacheSize", "EnabledState"}},
        {"PhysicalProcessor", {"Name", "NumberOfCores", "NumberOfLogicalProcessors", "L3CacheSize"}},
        {"Storage", {"Size", "InterfaceType", "BusAddress", "BlockSize"}},
        {"DiskPartition", {"Size", "StartingOffset"}},
        {"OperatingSystem", {"Caption", "Version", "KernelVersion", "Architecture", "CurrentTimeZone"}},
        {"Regional", {"Locale", "TimeZoneName", "CurrentTimeZone"}},
        {"ComponentID", {"MachineId", "Name"}},
        {"Memory", {"TotalVisibleMemorySize", "InstalledMemory"}},
    };
    for (const auto& [group, fields] : groups) {
        const Report live = gatheredLive(group);
        const Report tree = gatheredBelow(group, "/");
        ASSERT_EQ(keysOf(live), keysOf(tree)) << group;
        for (std::size_t i = 0; i < live.instances().size(); ++i) {
            for (const char* const field : fields) {
                EXPECT_EQ(live.instances()[i].get(field), tree.instances()[i].get(field))
                    << group << " " << field;
            }
        }
    }
}

}  // namespace toolkit::quorvah
