// zav_bench: measures every figure that the project documents, next to peers that do the same work.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "bench/CatalogueScans.h"
#include "bench/Hardware.h"
#include "bench/HardwarePeers.h"
#include "bench/Measuring.h"
#include "bench/Signatures.h"
#include "bench/Software.h"
#include "bench/Table.h"
#include "bench/Worker.h"

namespace {

using zavbench::Medians;
using zavbench::Row;

class ScratchDirectory {
  public:
    explicit ScratchDirectory(const std::filesystem::path& parent) {
        std::string name = (parent / "zav_bench_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch directory");
        path_ = name;
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

std::vector<Row> allRows() {
    std::vector<Row> all = zavbench::hardwareRows();
    for (const auto& rows : {zavbench::hardwarePeerRows(), zavbench::softwareRows(),
                             zavbench::signatureRows(), zavbench::catalogueRows()}) {
        all.insert(all.end(), rows.begin(), rows.end());
    }
    return all;
}

bool measureAll(const std::filesystem::path& scratch, Medians& medians) {
    const ScratchDirectory memory(
        "/dev/shm");  // a file system in memory, so that no disk affects the figures
    zavbench::addHardware(scratch, memory.path());
    zavbench::addHardwarePeers(scratch, memory.path());
    zavbench::addSoftware(scratch);
    zavbench::addSignatures(scratch);
    zavbench::addCatalogue(scratch);
    const bool good = zavbench::measureRegistered(medians);
    zavbench::deriveHardwarePeers(scratch, medians);
    zavbench::deriveSoftware(medians);
    zavbench::deriveSignatures(medians);
    zavbench::observeCatalogue(scratch, medians);
    return good;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() > 1 && arguments[0] == "--work")
        return zavbench::work({arguments.begin() + 1, arguments.end()});

    const ScratchDirectory scratch(std::filesystem::temp_directory_path());
    Medians medians;
    bool good = true;
    zavbench::countHardware(scratch.path(), medians);
    zavbench::countSoftware(scratch.path(), medians);
    if (arguments.empty() || arguments[0] != "--instructions") {
        arguments.insert(arguments.begin(), {"zav_bench", "--benchmark_repetitions=15",
                                             "--benchmark_enable_random_interleaving=true"});
        std::vector<char*> flags;
        for (std::string& argument : arguments) flags.push_back(argument.data());
        int count = static_cast<int>(flags.size());
        benchmark::Initialize(&count, flags.data());
        if (benchmark::ReportUnrecognizedArguments(count, flags.data())) return 2;
        good = measureAll(scratch.path(), medians);
    }
    const std::vector<Row> rows = allRows();
    zavbench::printTable(std::cout, rows, medians);
    return good && zavbench::allReached(rows, medians) ? 0 : 1;
}
