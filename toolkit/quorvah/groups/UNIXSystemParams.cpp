#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "schema/groups/UNIXSystemParams.h"
#include "toolkit/machine/files/MountInfo.h"
#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/Container.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/CpuList.h"
#include "toolkit/quorvah/sources/CpuTopology.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelCommandLine.h"
#include "toolkit/quorvah/sources/KernelInfo.h"

namespace toolkit::quorvah {

namespace {

void setKernel(const Root& root, Instance& system) {
    const KernelInfo kernel = readKernelInfo(root);
    system.set("SystemName", kernel.name);
    system.set("Release", kernel.release);
    system.set("Version", kernel.version);
    system.set("Machine", kernel.machine);
}

// The number in /etc/hostid as eight hexadecimal digits. Empty without the file: gethostid() would derive the number
// from an IP address, possibly by asking the network.
std::string hostId(const Root& root) {
    const std::string bytes = root.read("/etc/hostid").value_or("");
    if (bytes.size() != 4) return {};
    return hexDigits(littleEndian(bytes, 0, 4), 8);
}

// sysconf() returns -1 for an unknown value.
void setKnown(Instance& system, const char* field, long value) {
    if (value >= 0) system.set(field, value);
}

void setLimits(const Root& root, Instance& system) {
    if (!root.live()) return;
    const std::pair<const char*, int> limits[] = {
        {"PageSize", _SC_PAGESIZE},
        {"OpenMax", _SC_OPEN_MAX},
        {"ArgMax", _SC_ARG_MAX},
        {"ChildMax", _SC_CHILD_MAX},
        {"ClockTicksPerSecond", _SC_CLK_TCK},
    };
    for (const auto& [field, name] : limits) {
        setKnown(system, field, ::sysconf(name));
    }
}

void setProcessors(const Root& root, Instance& system) {
    if (root.live()) {
        setKnown(system, "ProcessorsConfigured", ::sysconf(_SC_NPROCESSORS_CONF));
        setKnown(system, "ProcessorsOnline", ::sysconf(_SC_NPROCESSORS_ONLN));
        return;
    }
    const std::string directory = "/sys/devices/system/cpu/";
    std::size_t configured = readCpuList(root.readLine(directory + "possible")).size();
    std::size_t online = readCpuList(root.readLine(directory + "online")).size();
    if (configured == 0 || online == 0) {
        // Old kernels have no lists.
        const CpuInfo info(root.read("/proc/cpuinfo").value_or(""));
        const std::vector<LogicalCpu> cpus = readCpus(root, info);
        if (configured == 0) configured = cpus.size();
        const auto isOnline = [](const LogicalCpu& cpu) { return cpu.online == true; };
        if (online == 0) online = static_cast<std::size_t>(std::ranges::count_if(cpus, isOnline));
    }
    if (configured > 0) system.set("ProcessorsConfigured", configured);
    if (online > 0) system.set("ProcessorsOnline", online);
}

// The name of the program behind a path: "busybox" for /sbin/init if that is a link to it.
std::string programName(const Root& root, std::string_view path) {
    std::string target = path.starts_with('/') ? root.linkName(path) : std::string();
    return target.empty() ? std::string(path.substr(path.rfind('/') + 1)) : target;
}

// The name of the first process: "systemd", "busybox", "runit" or "init". A program that was started as "init" is named by
// its file, of which the command line tells. Without the process, as in a tree that was not captured from a running system,
// it is the program that would be started.
std::string initSystem(const Root& root) {
    std::string process = root.readLine("/proc/1/comm");
    if (!process.empty() && process != "init") return process;
    if (!process.empty()) {
        const std::string arguments = root.read("/proc/1/cmdline").value_or("");
        std::string_view program = arguments;
        program = program.substr(0, program.find('\0'));
        // The init of System V appends its run level: "init [2]".
        const std::string name = programName(root, nextWord(program));
        return name.empty() ? process : name;
    }
    for (const char* const path : {"/sbin/init", "/usr/sbin/init", "/etc/init", "/bin/init", "/init"}) {
        std::string target = root.linkName(path);
        if (!target.empty()) return target;
        if (root.exists(path)) return root.isDirectory("/run/systemd/system") ? "systemd" : "init";
    }
    return {};
}

// The run level in the line "id:2:initdefault:" of /etc/inittab, which the init of System V reads.
std::string inittabLevel(const Root& root) {
    const std::string inittab = root.read("/etc/inittab").value_or("");
    std::string_view rest = inittab;
    for (std::string_view line; nextLine(rest, line);) {
        if (line.starts_with('#')) continue;
        takeField(line, ':');
        const std::string_view level = takeField(line, ':');
        if (takeField(line, ':') == "initdefault") return "runlevel " + std::string(level);
    }
    return {};
}

std::string defaultTarget(const Root& root) {
    for (const char* const directory :
         {"/etc/systemd/system/", "/usr/lib/systemd/system/", "/lib/systemd/system/"}) {
        std::string target = root.linkName(std::string(directory) + "default.target");
        if (!target.empty()) return target;
    }
    return inittabLevel(root);
}

// The root device that the boot loader passed, or else the mounted one. A container has another root than the machine.
std::string rootDevice(const Root& root, std::string_view commandLine) {
    std::string device = bootParameter(commandLine, "root");
    const int denials = root.denials();
    const bool container = !containerType(root).empty();
    root.forgetDenials(denials);
    if (!device.empty() && !container) return device;
    device.clear();
    for (const Mount& mount : readMountInfo(root.read("/proc/self/mountinfo").value_or(""))) {
        if (mount.mountPoint == "/") device = mount.source;
    }
    return device;
}

void setBoot(const Root& root, Instance& system) {
    const std::string commandLine = root.readLine("/proc/cmdline");
    system.set("InitSystem", initSystem(root));
    system.set("DefaultTarget", defaultTarget(root));
    system.set("BootParameters", withoutSecrets(commandLine));
    system.set("RootDevice", rootDevice(root, commandLine));
    std::string modules = root.readLine("/sys/kernel/security/lsm");
    std::ranges::replace(modules, ',', ';');
    system.set("SecurityModules", std::move(modules));
}

// The text if it is a number such as "0.42", or else an empty text.
std::string_view decimal(std::string_view text) {
    std::string_view fraction = text;
    const std::string_view whole = takeField(fraction, '.');
    return readCount(whole) && readCount(fraction) ? text : std::string_view();
}

void setLoad(const Root& root, Instance& system) {
    const std::string averages = root.readLine("/proc/loadavg");
    std::string_view rest = averages;
    system.set("LoadAverage1", decimal(nextWord(rest)));
    system.set("LoadAverage5", decimal(nextWord(rest)));
    system.set("LoadAverage15", decimal(nextWord(rest)));
    system.set("Uptime", readLeadingCount(root.readLine("/proc/uptime")));
}

constexpr const char* kSources[] = {"/proc/version", "/etc/hostname"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    data.addOne([&root](Instance& system) {
        system.set("NodeName", hostName(root));
        setKernel(root, system);
        system.set("HostId", hostId(root));
        setLimits(root, system);
        setProcessors(root, system);
        setBoot(root, system);
        setLoad(root, system);
    });
}

}  // namespace

constexpr Group kUNIXSystemParams{.displayName = "UNIX System Params",
                                  .xmlName = "UNIXSystemParams",
                                  .fields = schema::kUNIXSystemParams.fields,
                                  .gather = gather,
                                  .sources = kSources};

}  // namespace toolkit::quorvah
