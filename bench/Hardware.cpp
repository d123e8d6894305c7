#include "bench/Hardware.h"

#include <cstdlib>
#include <fstream>

#include "bench/Instructions.h"
#include "bench/Measuring.h"
#include "bench/OutputFile.h"
#include "bench/Process.h"
#include "include/zav.hpp"
#include "kest/Text.h"

namespace zavbench {

namespace {

constexpr int kRuns = 50;  // runs of a scanner per sample

std::string outputFile(const std::filesystem::path& scratch, const std::string& name, int instances) {
    const std::string path = scratch / name;
    writeOutputFile(path, instances);
    return path;
}

void addReading(const std::filesystem::path& scratch) {
    const std::pair<const char*, int> sizes[] = {{"10", 21400}, {"100", 214000}};
    for (const auto& [size, instances] : sizes) {
        const std::string file = outputFile(scratch, std::string("out") + size + ".xml", instances);
        measureWork(std::string("read") + size, {"read", file});
        measureWork(std::string("expat") + size, {"read-expat", file});
        measureWork(std::string("values") + size, {"read-values", file});
        measureWork(std::string("libxml") + size, {"read-libxml", file});
        measureWork(std::string("pugixml") + size, {"read-pugixml", file});
        measureWork(std::string("tables") + size, {"tables", file});
    }
}

void addRunning(const std::filesystem::path& scratch, const std::filesystem::path& memory) {
    const std::string idle = besideThis("idle");
    const std::string lines = besideThis("lines");
    const std::string runs = std::to_string(kRuns);
    measureWork("run", {"run", idle, runs, memory, "0"}, kRuns);
    measureWork("rundisk", {"run", idle, runs, scratch, "0"}, kRuns);
    measureWork("launch", {"launch", idle, runs}, kRuns);
    measureWork("spawn", {"spawn", idle, runs}, kRuns);
    measureWork("spawnfile", {"spawn-file", idle, runs, scratch}, kRuns);
    measureWork("lines", {"run", lines, "5", memory, "0"}, 5);
    measureWork("rawlines", {"spawn", lines, "5"}, 5);
    measureWork("run10MB", {"run", idle, runs, memory, "10000000"}, kRuns);
    measureWork("run2GB", {"run", idle, runs, memory, "2000000000"}, kRuns);
}

void readLastField(benchmark::State& state) {
    const std::wstring toolkit = kest::widen(besideThis("fields"));
    ZAVCtx* library = nullptr;
    ZAVHwCtx* context = nullptr;
    ZAV_init("bench", nullptr, nullptr, nullptr, toolkit.c_str(), &library);
    ZAV_hw_init(library, nullptr, nullptr, &context);
    ZAV_hw_setopt(context, 0, 1);
    if (ZAV_hw_run(context) != 0) state.SkipWithError("the run failed");
    const wchar_t* value = nullptr;
    for (auto unused : state) {
        if (ZAV_hw_get_value(context, 2, 0, L"Field30", &value) != 0) state.SkipWithError("no value");
        benchmark::DoNotOptimize(value);
    }
    ZAV_hw_free(context);
    ZAV_free(library);
}

// The same with zav.hpp.
void readLastFieldWithObjects(benchmark::State& state) {
    const zav::Library library("bench", {besideThis("fields"), "", {}});
    const zav::Hardware hardware = library.hardware({ZAV_HW_PROCESSOR});
    const zav::Instance processor = hardware.instances(ZAV_HW_PROCESSOR).front();
    for (auto unused : state) {
        const zav::Text value = processor.value(L"Field30");
        benchmark::DoNotOptimize(value);
    }
}

std::string writeConfig(const std::filesystem::path& scratch, const std::string& name,
                        const std::vector<std::string>& groups) {
    const std::string path = scratch / name;
    std::ofstream out(path);
    out << "<QEL><ZAV><Hardware version=\"1.0\">";
    for (const std::string& group : groups) out << "<Group Name=\"" << group << "\"/>";
    out << "</Hardware></ZAV></QEL>";
    return path;
}

void addScanners(const std::filesystem::path& scratch, const std::filesystem::path& memory) {
    const std::string quorvah = besideThis("quorvah");
    const std::string output = scratch / "quorvah.xml";
    const std::string packages = writeConfig(scratch, "packages.xml", {"Software Packages"});
    measureProgram("packages", {quorvah, "-c", packages, "-o", memory / "quorvah.xml"}, kRuns);
    measureProgram("packagesdisk", {quorvah, "-c", packages, "-o", output}, kRuns);
    measureProgram("dpkg-query", {"dpkg-query", "-W"}, kRuns);
}

}  // namespace

const std::vector<Row>& hardwareRows() {
    static const std::vector<Row> rows = {
        {"output of 10 MB to tables / Expat without handlers, CPU", "read10", "expat10", 0.8},
        {"output of 100 MB to tables / Expat without handlers, CPU", "read100", "expat100", 0.8},
        {"output of 10 MB to tables / pugixml's tree copied into them, CPU", "read10", "pugixml10", 0.75},
        {"output of 100 MB to tables / pugixml's tree copied into them, CPU", "read100", "pugixml100", 0.75},
        {"the same of 10 MB, and every value once / Expat without handlers, CPU", "values10", "expat10", 1.2},
        {"the same of 100 MB, and every value once / Expat without handlers, CPU", "values100", "expat100",
         1.2},
        {"output of 10 MB to tables / libxml2's tree copied into them, CPU", "read10", "libxml10", 0.9},
        {"output of 100 MB to tables / libxml2's tree copied into them, CPU", "read100", "libxml100", 0.9},
        {"output of 10 MB, peak memory / tables alone", "read10/bytes", "tables10/bytes", 1.6},
        {"output of 100 MB, peak memory / tables alone", "read100/bytes", "tables100/bytes", 1.6},
        {"output to tables, instructions / Expat without handlers", "read/instructions", "expat/instructions",
         0.6},
        {"ZAV_hw_run, idle scanner, files in memory / posix_spawn, pipe, wait", "run", "spawn", 1.25},
        {"ZAV_hw_run, idle scanner, files on disk / the same and one file made", "rundisk", "spawnfile",
         1.25},
        {"ZAV_hw_run, idle scanner, files on disk / posix_spawn, pipe, wait", "rundisk", "spawn", 0},
        {"the launch in it alone / posix_spawn, pipe, wait", "launch", "spawn", 1.15},
        {"a scanner of 100,000 lines / raw reads of 64 KiB", "lines", "rawlines", 1.25},
        {"ZAV_hw_run in a host of 2 GB / in a host of 10 MB", "run2GB", "run10MB", 1.4},
        {"ZAV_hw_get_value, last of 30 fields, no callback", "value", "", 0},
        {"the same with zav.hpp / ZAV_hw_get_value", "objectvalue", "value", 1.1},
        {"quorvah, software packages, file in memory / dpkg-query -W, CPU", "packages", "dpkg-query", 0.5},
        {"quorvah, software packages, file on disk / dpkg-query -W, CPU", "packagesdisk", "dpkg-query", 0},
    };
    return rows;
}

void addHardware(const std::filesystem::path& scratch, const std::filesystem::path& memory) {
    addReading(scratch);
    addRunning(scratch, memory);
    benchmark::RegisterBenchmark("value", readLastField);
    benchmark::RegisterBenchmark("objectvalue", readLastFieldWithObjects);
    addScanners(scratch, memory);
}

void countHardware(const std::filesystem::path& scratch, Medians& medians) {
    const std::string file = outputFile(scratch, "counted.xml", 3600);
    const double nothing = instructionsOf({"nothing"});
    medians["read/instructions"] = instructionsOf({"read", file}) - nothing;
    medians["expat/instructions"] = instructionsOf({"read-expat", file}) - nothing;
}

}  // namespace zavbench
