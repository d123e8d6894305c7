#include "bench/CatalogueScans.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>

#include "bench/Catalogue.h"
#include "bench/MachineTree.h"
#include "bench/Measuring.h"
#include "bench/Process.h"

namespace zavbench {

namespace {

using std::filesystem::path;

constexpr int kFiles = 500'000;
constexpr double kMemoryLimit = 150e6;

std::vector<std::string> liveScanOf(const path& scratch, const std::string& name) {
    return {besideThis("quorvis"),
            "-c",
            scratch / "catalogue-config.xml",
            "-o",
            scratch / (name + "-output.xml"),
            "-e",
            scratch / (name + "-warnings.xml"),
            "-i",
            scratch / (name + "-signatures.xml")};
}

std::vector<std::string> scanOf(const path& scratch, const std::string& name, const path& root) {
    std::vector<std::string> command = liveScanOf(scratch, name);
    command.insert(command.end(), {"--root", root});
    return command;
}

path treeIn(const path& scratch) {
    return scratch / "machine";
}

// Every step-th signature, so that all kinds are there.
std::vector<std::string> selected(const std::vector<std::string>& signatures, std::size_t count) {
    std::vector<std::string> some;
    for (std::size_t i = 0; i < count; ++i) some.push_back(signatures[i * signatures.size() / count]);
    return some;
}

// The sizes of the files that the patterns of the signatures name, each file once, and of the package database.
double namedBytes(const path& scratch) {
    runProcess(scanOf(scratch, "patterns", treeIn(scratch)), true);
    std::ifstream in(scratch / "patterns-output.xml");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    std::map<std::string, double> sizes;
    const auto valueAfter = [&text](std::size_t& at, const std::string& lead) {
        at = text.find(lead, at);
        if (at == std::string::npos) return std::string();
        at += lead.size();
        return text.substr(at, text.find('"', at) - at);
    };
    for (std::size_t at = 0;;) {
        const std::string file = valueAfter(at, "\" name=\"/");
        if (file.empty()) break;
        sizes[file] = std::atof(valueAfter(at, "<Variable name=\"size\" value=\"").c_str());
    }
    double sum = 0;
    for (const auto& [file, size] : sizes) sum += size;
    const path database = treeIn(scratch) / "var/lib/dpkg";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(database)) {
        const path& file = entry.path();
        if (file.extension() == ".list" || file.filename() == "status")
            sum += static_cast<double>(entry.file_size());
    }
    return sum;
}

Observed observe(const std::vector<std::string>& scan) {
    const Observed observed = observeProcess(scan);
    if (observed.status == 0) return observed;
    std::cerr << "zav_bench: the scan failed:";
    for (const std::string& argument : scan) std::cerr << ' ' << argument;
    std::cerr << '\n';
    std::exit(1);
}

Observed observeScan(const path& scratch, const std::string& name, const path& root) {
    return observe(scanOf(scratch, name, root));
}

}  // namespace

const std::vector<Row>& catalogueRows() {
    static const std::vector<Row> rows = {
        {"quorvis, the whole catalogue, 500,000 files / a bare walk, time", "catalogue/wall", "machine/wall",
         1.5},
        {"the same, CPU of both threads", "catalogue", "machine", 2},
        {"the same, bytes read / sizes of the files that signatures name", "catalogue-read/bytes",
         "named/bytes", 1.2},
        {"the same, peak memory of both processes / 150 MB", "catalogue-memory/bytes", "limit/bytes", 1},
        {"quorvis, 3,000 signatures / 300 signatures, the same files, CPU", "catalogue3000", "catalogue300",
         2},
        {"quorvis, 3,000 signatures, peak memory / 150 MB", "catalogue3000-memory/bytes", "limit/bytes", 1},
        {"zav sw, this machine / find / -xdev, time, once", "live-sw", "live-find", 0},
        {"the same, CPU", "live-sw-cpu", "live-find-cpu", 0},
        {"the same, peak memory of both processes / 150 MB", "live-memory/bytes", "limit/bytes", 1},
    };
    return rows;
}

void addCatalogue(const path& scratch) {
    makeMachineTree(treeIn(scratch), kFiles);
    std::filesystem::create_directories(scratch / "nothing");
    const std::vector<std::string> all = shippedSignatures();
    const std::vector<std::string> some = selected(all, 300);
    writeCatalogueSettings(scratch / "catalogue-config.xml");
    writeSignatureFile(scratch / "catalogue-signatures.xml", all);
    writeSignatureFile(scratch / "patterns-signatures.xml", signaturesOfPatterns(all));
    writeSignatureFile(scratch / "catalogue300-signatures.xml", some);
    writeSignatureFile(scratch / "catalogue3000-signatures.xml", multiplied(some, 3'000));
    for (const char* const name : {"catalogue", "catalogue300", "catalogue3000"})
        measureProgram(name, scanOf(scratch, name, treeIn(scratch)), 1);
    measureProgram("machine", {besideThis("bare_walk"), treeIn(scratch)}, 1);
}

void observeCatalogue(const path& scratch, Medians& medians) {
    if (!medians.contains("catalogue")) return;
    const Observed whole = observeScan(scratch, "catalogue", treeIn(scratch));
    const Observed empty = observeScan(scratch, "catalogue", scratch / "nothing");
    medians["catalogue-read/bytes"] = whole.bytesRead - empty.bytesRead;
    medians["named/bytes"] = namedBytes(scratch);
    medians["catalogue-memory/bytes"] = whole.peakBytes;
    medians["catalogue3000-memory/bytes"] = observeScan(scratch, "catalogue3000", treeIn(scratch)).peakBytes;
    medians["limit/bytes"] = kMemoryLimit;
    medians["live-memory/bytes"] = observe(liveScanOf(scratch, "catalogue")).peakBytes;
    const Finished software = runProcess({besideThis("zav"), "sw"}, true);
    const Finished find = runProcess({"find", "/", "-xdev"}, true);
    medians["live-sw"] = software.wallSeconds;
    medians["live-sw-cpu"] = software.cpuSeconds;
    medians["live-find"] = find.wallSeconds;
    medians["live-find-cpu"] = find.cpuSeconds;
}

}  // namespace zavbench
