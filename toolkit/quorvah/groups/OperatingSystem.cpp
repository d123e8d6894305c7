#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <utility>

#include "schema/groups/OperatingSystem.h"
#include "toolkit/machine/packages/Packages.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/machine/text/ShellVariables.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"
#include "toolkit/quorvah/sources/TimeZone.h"
#include "toolkit/quorvah/sources/Utmp.h"

namespace toolkit::quorvah {

namespace {

constexpr const char* kLinux = "36";  // the value for Linux of CIM_OperatingSystem.OSType

// Systems without os-release: files that contain the version alone.
void setOlderRelease(const Root& root, Instance& system) {
    constexpr std::pair<const char*, const char*> kFiles[] = {{"/etc/alpine-release", "alpine"},
                                                              {"/etc/debian_version", "debian"}};
    for (const auto& [path, id] : kFiles) {
        const std::string version = root.readLine(path);
        if (version.empty()) continue;
        system.set("Id", id);
        // Such as "trixie/sid"
        if (version.front() >= '0' && version.front() <= '9') system.set("VersionId", version);
        return;
    }
}

void setRelease(const Root& root, Instance& system) {
    std::optional<std::string> file = root.read("/etc/os-release");
    if (!file) file = root.read("/usr/lib/os-release");
    const ShellVariables release(file.value_or(""));
    system.set("Caption", release.value("PRETTY_NAME"));
    system.set("OtherTypeDescription", release.value("NAME"));
    system.set("Id", release.value("ID"));
    system.set("IdLike", wordsOf(release.value("ID_LIKE")));
    system.set("VersionId", release.value("VERSION_ID"));
    system.set("Codename", release.value("VERSION_CODENAME"));
    system.set("BuildId", release.value("BUILD_ID"));
    if (!file) setOlderRelease(root, system);
}

void setKernel(const Root& root, Instance& system) {
    const KernelInfo kernel = readKernelInfo(root);
    system.set("Version", kernel.release);
    system.set("KernelVersion", kernel.version);
    system.set("Architecture", kernel.machine);
}

// The creation time of a file that has this number in its file system; of any file if that is 0.
std::optional<std::int64_t> birthTime(const Root& root, const char* path, std::uint64_t number) {
    const kest::Descriptor file = root.open(path, O_PATH);
    struct statx status {};
    if (!file.isOpen() || ::statx(file.number(), "", AT_EMPTY_PATH, STATX_BTIME | STATX_INO, &status) != 0 ||
        (number != 0 && status.stx_ino != number))
        return std::nullopt;
    return (status.stx_mask & STATX_BTIME) != 0 ? std::optional(status.stx_btime.tv_sec) : std::nullopt;
}

// The approximate time of installation: the creation time of /lost+found or of /etc/machine-id. In a copied tree these
// are the times of copying. There machine-id does not count, and lost+found has another number than mke2fs gave it.
std::string installDate(const Root& root) {
    constexpr std::uint64_t kNumberOfLostAndFound = 11;
    std::optional<std::int64_t> born = birthTime(root, "/lost+found", kNumberOfLostAndFound);
    if (!born && root.live()) born = birthTime(root, "/etc/machine-id", 0);
    // Files in a file system that was made from an image may have no creation time.
    return born && *born > 0 ? isoTime(*born) : std::string();
}

void setTimes(const Root& root, Instance& system) {
    system.set("InstallDate", installDate(root));
    const std::optional<std::int64_t> boot = bootTime(root);
    if (boot) system.set("LastBootUpTime", isoTime(*boot));
    const std::optional<std::int64_t> now = observationTime(root);
    if (!now) return;
    system.set("LocalDateTime", isoTime(*now));
    const std::optional<ZoneOffset> offset = zoneOffset(root, *now);
    if (offset) system.set("CurrentTimeZone", offset->minutes);
}

std::size_t countProcesses(const Root& root) {
    const auto isNumber = [](const std::string& name) {
        return std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
    };
    return static_cast<std::size_t>(std::ranges::count_if(root.list("/proc"), isNumber));
}

void setProcesses(const Root& root, Instance& system) {
    system.set("NumberOfUsers", countUsers(root));
    const std::size_t processes = countProcesses(root);
    if (processes > 0) system.set("NumberOfProcesses", processes);
    system.set("MaxNumberOfProcesses", root.readCount("/proc/sys/kernel/pid_max"));
}

// The size of the address space of a process in KiB. On x86 it is half of what the line "48 bits physical, 48 bits
// virtual" states. On other CPUs it depends on how the kernel was built.
Count maxProcessMemory(const Root& root) {
    const CpuInfo info(root.read("/proc/cpuinfo").value_or(""));
    const std::vector<int> cpus = info.cpus();
    if (cpus.empty()) return std::nullopt;
    const std::string_view sizes = info.value(cpus.front(), "address sizes");
    const std::size_t comma = sizes.find(", ");
    if (comma == std::string_view::npos) return std::nullopt;
    const Count bits = readLeadingCount(sizes.substr(comma + 2));
    if (!bits || *bits <= 32 || *bits > 64) return std::nullopt;
    return std::uint64_t{1} << (*bits - 11);
}

std::vector<std::string> namesOf(const std::vector<PackageType>& types) {
    std::vector<std::string> names;
    names.reserve(types.size());
    for (const PackageType type : types) names.emplace_back(nameOf(type));
    return names;
}

constexpr const char* kSources[] = {"/etc/os-release", "/usr/lib/os-release", "/etc/alpine-release",
                                    "/etc/debian_version", "/proc/version"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const auto fill = [&root](Instance& system) {
        setRelease(root, system);
        setKernel(root, system);
        system.set("CSName", hostName(root));
        setTimes(root, system);
        setProcesses(root, system);
        system.set("MaxProcessMemorySize", maxProcessMemory(root));
        system.set("PackageManager", namesOf(packageManagers(root)));
    };
    data.addOne(fill, {{"Name", "linux"}, {"OSType", kLinux}});
}

}  // namespace

constexpr Group kOperatingSystem{.displayName = "Operating System",
                                 .xmlName = "OperatingSystem",
                                 .fields = schema::kOperatingSystem.fields,
                                 .gather = gather,
                                 .sources = kSources};

}  // namespace toolkit::quorvah
