#include "bench/HardwarePeers.h"

#include <fmt/format.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

#include "bench/Facts.h"
#include "bench/HardwareTree.h"
#include "bench/Measuring.h"
#include "bench/Process.h"
#include "toolkit/quorvah/groups/GroupTable.h"

namespace zavbench {

namespace {

namespace fs = std::filesystem;

struct Peer {
    const char* name;
    std::vector<std::string> command;
    double (*facts)(std::string_view);
};

const std::vector<Peer>& peers() {
    static const std::vector<Peer> all = {
        {"lshw", {"lshw", "-json"}, factsInJson},
        {"hwinfo", {"hwinfo", "--short"}, factsInColumns},
        {"inxi", {"inxi", "-F", "-c", "0"}, factsAfterColons},
        {"facter", {"facter", "--json"}, factsInJson},
    };
    return all;
}

// Together they report part of what the scanner does.
const std::vector<Peer>& smallTools() {
    static const std::vector<Peer> all = {
        {"lscpu", {"lscpu", "--json"}, factsInJson},
        {"lsblk", {"lsblk", "--json", "--output-all"}, factsInJson},
        {"ip", {"ip", "-json", "address"}, factsInJson},
        {"dpkg-query", {"dpkg-query", "-W"}, factsInColumns},
    };
    return all;
}

struct Machine {
    int processors;
    int disks;

    std::string name() const { return fmt::format("machine{}", processors); }
};
constexpr Machine kMachines[] = {{64, 250}, {256, 1000}, {512, 2000}};

bool isInstalled(const std::string& program) {
    std::istringstream path(std::getenv("PATH") != nullptr ? std::getenv("PATH") : "");
    for (std::string directory; std::getline(path, directory, ':');) {
        if (fs::exists(fs::path(directory) / program)) return true;
    }
    return false;
}

std::string writeConfiguration(const fs::path& scratch, bool withPackages) {
    const std::string path = scratch / (withPackages ? "every.xml" : "nopackages.xml");
    std::ofstream out(path);
    out << "<QEL><ZAV><Hardware version=\"1.0\">";
    for (const toolkit::quorvah::Group* const group : toolkit::quorvah::allGroups()) {
        if (withPackages || std::string_view(group->xmlName) != "SoftwarePackages")
            out << "<Group Name=\"" << group->xmlName << "\"/>";
    }
    out << "</Hardware></ZAV></QEL>";
    return path;
}

double factsOfScanner(const fs::path& scratch, bool withPackages) {
    const std::string output = scratch / "facts.xml";
    runProcess({besideThis("quorvah"), "-c", writeConfiguration(scratch, withPackages), "-o", output}, true);
    std::ostringstream text;
    text << std::ifstream(output).rdbuf();
    return factsInXml(text.str());
}

// facter prints its facts and ends with 1 if one of them cannot be read here.
int statusOf(const Peer& peer) {
    const int status = runProcess(peer.command, true).status;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 0;
}

double factsOf(const Peer& peer) {
    return isInstalled(peer.command[0]) ? peer.facts(runProcess(peer.command, true).output)
                                        : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

const std::vector<Row>& hardwarePeerRows() {
    static const std::vector<Row> rows = {
        {"quorvah, all groups / lshw -json, time", "every/wall", "lshw/wall", 0.35},
        {"quorvah, all groups / hwinfo --short, time", "every/wall", "hwinfo/wall", 0.3},
        {"quorvah, all groups / inxi -F, time", "every/wall", "inxi/wall", 0.1},
        {"quorvah, all groups / facter --json, time", "every/wall", "facter/wall", 0.1},
        {"quorvah, all groups / lscpu, lsblk, ip and dpkg-query, time", "every/wall", "tools/wall", 0},
        {"quorvah, all groups / lshw -json, CPU", "every", "lshw", 0.6},
        {"quorvah, all groups / hwinfo --short, CPU", "every", "hwinfo", 0},
        {"quorvah, all groups / inxi -F, CPU", "every", "inxi", 0},
        {"quorvah, all groups / facter --json, CPU", "every", "facter", 0},
        {"quorvah, all groups / lscpu, lsblk, ip and dpkg-query, CPU", "every", "tools", 0},
        {"facts, lshw / quorvah without software packages", "lshw/facts", "hardware/facts", 0.5},
        {"facts, hwinfo / quorvah without software packages", "hwinfo/facts", "hardware/facts", 0.5},
        {"facts, inxi / quorvah without software packages", "inxi/facts", "hardware/facts", 0.5},
        {"facts, facter / quorvah without software packages", "facter/facts", "hardware/facts", 0.5},
        {"facts, lscpu, lsblk, ip and dpkg-query / quorvah, all groups", "tools/facts", "every/facts", 0.5},
        {"quorvah, 64 processors, 250 disks, CPU", "machine64", "", 0},
        {"quorvah, 256 processors, 1,000 disks / four times as long, CPU", "machine256", "machine64/times4",
         1.2},
        {"quorvah, 512 processors, 2,000 disks / twice as long, CPU", "machine512", "machine256/times2", 1.2},
        {"quorvah, 512 processors, 2,000 disks, time", "machine512/wall", "", 0},
    };
    return rows;
}

void addHardwarePeers(const fs::path& scratch, const fs::path& memory) {
    const std::string quorvah = besideThis("quorvah");
    const std::string every = writeConfiguration(scratch, true);
    const std::string output = memory / "every.out.xml";
    measureProgram("every", {quorvah, "-c", every, "-o", output});
    for (const auto* const tools : {&peers(), &smallTools()}) {
        for (const Peer& peer : *tools) {
            const bool known =
                std::string_view(peer.name) == "dpkg-query";  // also a peer of the package list
            if (!known && isInstalled(peer.command[0]))
                measureProgram(peer.name, peer.command, 5, statusOf(peer));
        }
    }
    for (const Machine& machine : kMachines) {
        const fs::path root = scratch / machine.name();
        makeHardwareTree(root, machine.processors, machine.disks);
        measureProgram(machine.name(), {quorvah, "-c", every, "-o", output, "--root", root}, 2);
    }
}

void deriveHardwarePeers(const fs::path& scratch, Medians& medians) {
    if (!medians.contains("every")) return;  // other benchmarks were chosen
    constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();
    for (const Peer& peer : peers()) {
        const std::string name = peer.name;
        medians.try_emplace(name, kAbsent);
        medians.try_emplace(name + "/wall", kAbsent);
        medians[name + "/facts"] = factsOf(peer);
    }
    for (const char* const figure : {"", "/wall"}) {
        double& sum = medians[std::string("tools") + figure];
        for (const Peer& tool : smallTools())
            sum += medians.try_emplace(tool.name + std::string(figure), kAbsent).first->second;
    }
    for (const Peer& tool : smallTools()) medians["tools/facts"] += factsOf(tool);
    medians["every/facts"] = factsOfScanner(scratch, true);
    medians["hardware/facts"] = factsOfScanner(scratch, false);
    medians["machine64/times4"] = 4 * medians["machine64"];
    medians["machine256/times2"] = 2 * medians["machine256"];
}

}  // namespace zavbench
