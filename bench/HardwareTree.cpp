#include "bench/HardwareTree.h"

#include <fmt/format.h>

#include <fstream>
#include <string>

namespace zavbench {

namespace {

namespace fs = std::filesystem;

constexpr int kThreadsPerPackage = 128;

void write(const fs::path& directory, const char* name, const std::string& content) {
    std::ofstream(directory / name) << content << '\n';
}

// "sda" to "sdz", "sdaa" and so on.
std::string diskName(int number) {
    std::string letters;
    for (int left = number + 1; left > 0; left = (left - 1) / 26)
        letters.insert(letters.begin(), static_cast<char>('a' + (left - 1) % 26));
    return "sd" + letters;
}

void makeCache(const fs::path& directory, const char* level, const char* type, const char* size,
               const std::string& shared) {
    fs::create_directories(directory);
    write(directory, "level", level);
    write(directory, "type", type);
    write(directory, "size", size);
    write(directory, "shared_cpu_list", shared);
}

void makeProcessor(const fs::path& root, int number) {
    const fs::path cpu = root / fmt::format("sys/devices/system/cpu/cpu{}", number);
    const int package = number / kThreadsPerPackage;
    const std::string core = fmt::format("{}-{}", number / 2 * 2, number / 2 * 2 + 1);
    const std::string all =
        fmt::format("{}-{}", package * kThreadsPerPackage, (package + 1) * kThreadsPerPackage - 1);
    fs::create_directories(cpu / "topology");
    fs::create_directories(cpu / "cpufreq");
    write(cpu, "online", "1");
    write(cpu / "topology", "physical_package_id", std::to_string(package));
    write(cpu / "topology", "die_id", "0");
    write(cpu / "topology", "core_id", std::to_string(number % kThreadsPerPackage / 2));
    write(cpu / "topology", "core_cpus_list", core);
    write(cpu / "topology", "package_cpus_list", all);
    write(cpu / "cpufreq", "cpuinfo_max_freq", "3700000");
    makeCache(cpu / "cache/index0", "1", "Data", "32K", core);
    makeCache(cpu / "cache/index1", "1", "Instruction", "32K", core);
    makeCache(cpu / "cache/index2", "2", "Unified", "1024K", core);
    makeCache(cpu / "cache/index3", "3", "Unified", "32768K", all);
}

void makeProcessors(const fs::path& root, int processors) {
    fs::create_directories(root / "proc");
    std::ofstream cpuinfo(root / "proc/cpuinfo");
    std::ofstream stat(root / "proc/stat");
    stat << "cpu  1000 10 500 90000 20 0 5 0 0 0\n";
    for (int number = 0; number < processors; ++number) {
        makeProcessor(root, number);
        cpuinfo << fmt::format(
            "processor\t: {}\nvendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 85\n"
            "model name\t: Intel(R) Xeon(R) Gold 6130 CPU @ 2.10GHz\nstepping\t: 4\nmicrocode\t: 0x2006b06\n"
            "cpu MHz\t\t: 2100.000\nphysical id\t: {}\ncore id\t\t: {}\nflags\t\t: fpu vme de pse tsc msr lm "
            "avx2\n\n",
            number, number / kThreadsPerPackage, number % kThreadsPerPackage / 2);
        stat << fmt::format("cpu{} 10 0 5 900 0 0 0 0 0 0\n", number);
    }
    const fs::path cpus = root / "sys/devices/system/cpu";
    for (const char* const file : {"online", "present", "possible"})
        write(cpus, file, fmt::format("0-{}", processors - 1));
}

void makeBlockDevice(const fs::path& root, const fs::path& place, const std::string& number) {
    fs::create_directories(root / place);
    write(root / place, "dev", number);
    write(root / place, "ro", "0");
    fs::create_symlink("../../../" + place.string(), root / "sys/class/block" / place.filename());
}

void makeDisk(const fs::path& root, int number) {
    const std::string name = diskName(number);
    const fs::path device =
        fmt::format("sys/devices/pci0000:00/0000:00:10.0/host0/target0:0:{0}/0:0:{0}:0", number);
    const fs::path disk = device / "block" / name;
    const std::string id = fmt::format("{}:{}", 8 + number / 16, number % 16 * 16);
    makeBlockDevice(root, disk, id);
    fs::create_directories(root / disk / "queue");
    write(root / disk, "size", "7814037168");
    write(root / disk, "removable", "0");
    write(root / disk / "queue", "rotational", "1");
    write(root / disk / "queue", "logical_block_size", "512");
    write(root / disk / "queue", "physical_block_size", "4096");
    fs::create_symlink("../../../" + device.filename().string(), root / disk / "device");
    write(root / device, "vendor", "SEAGATE");
    write(root / device, "model", "ST4000NM0023");
    write(root / device, "rev", "0004");
    write(root / device, "type", "0");
    fs::create_symlink("../../" + disk.string(), root / "sys/block" / name);
    write(root / "run/udev/data", ("b" + id).c_str(),
          fmt::format("E:ID_BUS=scsi\nE:ID_SERIAL_SHORT=Z1Z{:05}", number));

    const fs::path partition = disk / (name + "1");
    const std::string partitionId = fmt::format("{}:{}", 8 + number / 16, number % 16 * 16 + 1);
    makeBlockDevice(root, partition, partitionId);
    write(root / partition, "partition", "1");
    write(root / partition, "start", "2048");
    write(root / partition, "size", "7814033408");
    write(root / "run/udev/data", ("b" + partitionId).c_str(),
          fmt::format("E:ID_FS_TYPE=xfs\nE:ID_FS_UUID=7d54cf00-0000-4000-8000-{:012}", number));
}

}  // namespace

void makeHardwareTree(const fs::path& root, int processors, int disks) {
    for (const char* const directory : {"sys/block", "sys/class/block", "run/udev/data"})
        fs::create_directories(root / directory);
    makeProcessors(root, processors);
    for (int number = 0; number < disks; ++number) makeDisk(root, number);
}

}  // namespace zavbench
