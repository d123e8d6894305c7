#include "bench/Measuring.h"

#include <sys/wait.h>

#include <iostream>

#include "bench/Process.h"
#include "bench/Worker.h"

namespace zavbench {

namespace {

// Collects the medians and prints only progress and errors.
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
            for (const auto& [counter, value] : run.counters) medians_[name + '/' + counter] = value.value;
            std::cerr << "measured " << name << '\n';
        }
    }

    bool failed() const { return failed_; }

  private:
    Medians& medians_;
    bool failed_ = false;
};

}  // namespace

void measureWork(const std::string& name, const std::vector<std::string>& arguments, int perSample) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     double peak = 0;
                                     for (auto unused : state) {
                                         const Sample sample = runWorker(arguments);
                                         state.SetIterationTime(sample.cpuSeconds / perSample);
                                         peak = sample.peakBytes;
                                     }
                                     state.counters["bytes"] = peak;
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

void measureProgram(const std::string& name, const std::vector<std::string>& command, int runs, int status) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     double wall = 0;
                                     for (auto unused : state) {
                                         const Finished finished = runProcess(command, true);
                                         const bool good = WIFEXITED(finished.status) &&
                                                           WEXITSTATUS(finished.status) == status;
                                         if (!good) state.SkipWithError("the program failed");
                                         state.SetIterationTime(finished.cpuSeconds);
                                         wall += finished.wallSeconds;
                                     }
                                     state.counters["wall"] = wall / runs;
                                 })
        ->UseManualTime()
        ->Iterations(runs)
        ->Unit(benchmark::kMillisecond);
}

bool measureRegistered(Medians& medians) {
    Collector collector(medians);
    benchmark::RunSpecifiedBenchmarks(&collector);
    return !collector.failed();
}

}  // namespace zavbench
