// zav_bench: every figure that the library promises, measured in one run against peers that do the same work.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

#include "bench/Instructions.h"
#include "bench/OutputFile.h"
#include "bench/Process.h"
#include "bench/Table.h"
#include "bench/Worker.h"
#include "include/zav.h"
#include "kest/Text.h"

namespace {

using zavbench::Medians;
using zavbench::Row;
using zavbench::Sample;

const std::vector<Row> kRows = {
    {"output of 10 MB to tables / Expat without handlers, CPU", "read10", "expat10", 1.85},
    {"output of 100 MB to tables / Expat without handlers, CPU", "read100", "expat100", 1.85},
    {"output of 10 MB to tables / libxml2's tree copied into them, CPU", "read10", "libxml10", 0.9},
    {"output of 100 MB to tables / libxml2's tree copied into them, CPU", "read100", "libxml100", 0.9},
    {"output of 10 MB, peak memory / tables alone", "read10/bytes", "tables10/bytes", 1.6},
    {"output of 100 MB, peak memory / tables alone", "read100/bytes", "tables100/bytes", 1.6},
    {"output to tables, instructions / Expat without handlers", "read/instructions", "expat/instructions",
     1.4},
    {"ZAV_hw_run, idle scanner, files in memory / posix_spawn, pipe, wait", "run", "spawn", 1.25},
    {"ZAV_hw_run, idle scanner, files on disk / posix_spawn, pipe, wait", "rundisk", "spawn", 1.25},
    {"the launch in it alone / posix_spawn, pipe, wait", "launch", "spawn", 1.15},
    {"a scanner of 100,000 lines / raw reads of 64 KiB", "lines", "rawlines", 1.25},
    {"ZAV_hw_run in a host of 2 GB / in a host of 10 MB", "run2GB", "run10MB", 1.4},
    {"ZAV_hw_get_value, last of 30 fields, no callback", "value", "", 0},
    {"quorvah, all its groups / lshw -json, CPU", "quorvah", "lshw", 0.6},
    {"quorvah, software packages / dpkg-query -W, CPU", "packages", "dpkg-query", 0.5},
};

constexpr int kRuns = 50;                    // of a scanner, within one sample
constexpr const char* kMemory = "/dev/shm";  // a file system whose own speed does not show

std::filesystem::path scratch;

// Google Benchmark repeats, interleaves and takes medians; each iteration hands it what the work itself
// measured.
void add(const std::string& name, const std::vector<std::string>& arguments, int perSample = 1) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     double peak = 0;
                                     for (auto unused : state) {
                                         const Sample sample = zavbench::runWorker(arguments);
                                         state.SetIterationTime(sample.cpuSeconds / perSample);
                                         peak = sample.peakBytes;
                                     }
                                     state.counters["bytes"] = peak;
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

void addProgram(const std::string& name, const std::vector<std::string>& command) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     for (auto unused : state) {
                                         const zavbench::Finished finished =
                                             zavbench::runProcess(command, true);
                                         if (finished.status != 0) state.SkipWithError("the program failed");
                                         state.SetIterationTime(finished.cpuSeconds);
                                     }
                                 })
        ->UseManualTime()
        ->Iterations(5)
        ->Unit(benchmark::kMillisecond);
}

std::string outputFile(const std::string& name, int instances) {
    const std::string path = scratch / name;
    zavbench::writeOutputFile(path, instances);
    return path;
}

void addReading() {
    const std::pair<const char*, int> sizes[] = {{"10", 21400}, {"100", 214000}};
    for (const auto& [size, instances] : sizes) {
        const std::string file = outputFile(std::string("out") + size + ".xml", instances);
        add(std::string("read") + size, {"read", file});
        add(std::string("expat") + size, {"read-expat", file});
        add(std::string("libxml") + size, {"read-libxml", file});
        add(std::string("tables") + size, {"tables", file});
    }
}

void addRunning() {
    const std::string idle = zavbench::besideThis("idle");
    const std::string lines = zavbench::besideThis("lines");
    const std::string runs = std::to_string(kRuns);
    add("run", {"run", idle, runs, kMemory, "0"}, kRuns);
    add("rundisk", {"run", idle, runs, scratch, "0"}, kRuns);
    add("launch", {"launch", idle, runs}, kRuns);
    add("spawn", {"spawn", idle, runs}, kRuns);
    add("lines", {"run", lines, "5", kMemory, "0"}, 5);
    add("rawlines", {"spawn", lines, "5"}, 5);
    add("run10MB", {"run", idle, runs, kMemory, "10000000"}, kRuns);
    add("run2GB", {"run", idle, runs, kMemory, "2000000000"}, kRuns);
}

void readLastField(benchmark::State& state) {
    const std::wstring toolkit = kest::widen(zavbench::besideThis("fields"));
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

std::string writeConfig(const std::string& name, const std::vector<std::string>& groups) {
    const std::string path = scratch / name;
    std::ofstream out(path);
    out << "<QEL><ZAV><Hardware version=\"1.0\">";
    for (const std::string& group : groups) out << "<Group Name=\"" << group << "\"/>";
    out << "</Hardware></ZAV></QEL>";
    return path;
}

void addScanners() {
    const std::string quorvah = zavbench::besideThis("quorvah");
    const std::string output = scratch / "quorvah.xml";
    const std::string all =
        writeConfig("all.xml", {"ComponentID", "Processor", "PhysicalProcessor", "Memory", "Operating System",
                                "Storage", "Disk Partition", "Logical Drive", "Network Adapter", "IP Address",
                                "IPv6 Address", "Software Packages", "PCI Device", "USB Device",
                                "UNIX System Params", "Scan Info", "Regional", "VirtualMachineGuest"});
    const std::string packages = writeConfig("packages.xml", {"Software Packages"});
    addProgram("quorvah", {quorvah, "-c", all, "-o", output});
    addProgram("lshw", {"lshw", "-json"});
    addProgram("packages", {quorvah, "-c", packages, "-o", output});
    addProgram("dpkg-query", {"dpkg-query", "-W"});
}

// Prints nothing while it measures and keeps the medians.
class Collector : public benchmark::BenchmarkReporter {
  public:
    explicit Collector(Medians& medians) : medians_(medians) {}

    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) failed_ = true;
            if (run.error_occurred) std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
            if (run.aggregate_name != "median") continue;
            const std::string name = run.run_name.function_name;
            medians_[name] = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            const auto bytes = run.counters.find("bytes");
            if (bytes != run.counters.end()) medians_[name + "/bytes"] = bytes->second.value;
            std::cerr << "measured " << name << '\n';
        }
    }

    bool failed() const { return failed_; }

  private:
    Medians& medians_;
    bool failed_ = false;
};

class ScratchDirectory {
  public:
    ScratchDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "zav_bench_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch directory");
        scratch = name;
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(scratch, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
};

bool measureAll(Medians& medians) {
    addReading();
    addRunning();
    benchmark::RegisterBenchmark("value", readLastField);
    addScanners();
    Collector collector(medians);
    benchmark::RunSpecifiedBenchmarks(&collector);
    return !collector.failed();
}

void countInstructions(Medians& medians) {
    const std::string file = outputFile("counted.xml", 3600);
    const double nothing = zavbench::instructionsOf({"nothing"});
    medians["read/instructions"] = zavbench::instructionsOf({"read", file}) - nothing;
    medians["expat/instructions"] = zavbench::instructionsOf({"read-expat", file}) - nothing;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() > 1 && arguments[0] == "--work")
        return zavbench::work({arguments.begin() + 1, arguments.end()});

    const ScratchDirectory directory;
    Medians medians;
    bool good = true;
    countInstructions(medians);
    if (arguments.empty() || arguments[0] != "--instructions") {
        arguments.insert(arguments.begin(), {"zav_bench", "--benchmark_repetitions=9",
                                             "--benchmark_enable_random_interleaving=true"});
        std::vector<char*> flags;
        for (std::string& argument : arguments) flags.push_back(argument.data());
        int count = static_cast<int>(flags.size());
        benchmark::Initialize(&count, flags.data());
        if (benchmark::ReportUnrecognizedArguments(count, flags.data())) return 2;
        good = measureAll(medians);
    }
    zavbench::printTable(std::cout, kRows, medians);
    return good && zavbench::allReached(kRows, medians) ? 0 : 1;
}
