#include "bench/Software.h"

#include <cmath>

#include "bench/Instructions.h"
#include "bench/Measuring.h"
#include "bench/OutputFile.h"

namespace zavbench {

namespace {

constexpr int kLookups = 100'000;  // per sample, independent of the number of results

std::string outputFile(const std::filesystem::path& scratch, int results, int variables) {
    const std::string path = scratch / ("software" + std::to_string(results) + ".xml");
    writeSoftwareOutput(path, results, variables);
    return path;
}

std::string warningsFile(const std::filesystem::path& scratch) {
    const std::string path = scratch / "warnings.xml";
    writeEmptyWarnings(path);
    return path;
}

}  // namespace

const std::vector<Row>& softwareRows() {
    static const std::vector<Row> rows = {
        {"software output of 50,000 results / Expat without handlers, CPU", "swread", "swexpat", 0.9},
        {"software output of 50,000 results / libxml2's tree copied, CPU", "swread", "swlibxml", 0.9},
        {"software output of 50,000 results, peak memory / results alone", "swread/bytes", "swresults/bytes",
         0},
        {"software output to results, instructions / Expat without handlers", "swread/instructions",
         "swexpat/instructions", 0.6},
        {"100,000 find_results_by_guid in 100,000 results / in a std::map, CPU", "results100000", "map100000",
         1},
        {"its growth from 1,000 to 100,000 results / that of n log n", "results/growth", "nlogn/growth", 1},
        {"find_results_by_guid, each in 1,000 results", "results1000", "", 0},
        {"find_results_by_guid, each in 10,000 results", "results10000", "", 0},
        {"find_results_by_guid, each in 100,000 results", "results100000", "", 0},
        {"find_result_by_guid, each in 1,000 results", "result1000", "", 0},
        {"find_result_by_guid, each in 10,000 results", "result10000", "", 0},
        {"find_result_by_guid, each in 100,000 results", "result100000", "", 0},
    };
    return rows;
}

void addSoftware(const std::filesystem::path& scratch) {
    const std::string warnings = warningsFile(scratch);
    const std::string file = outputFile(scratch, 50'000, 10);
    measureWork("swread", {"sw-read", file, warnings});
    measureWork("swexpat", {"read-expat", file});
    measureWork("swlibxml", {"sw-read-libxml", file});
    measureWork("swresults", {"sw-results", file});
    for (const int count : {1'000, 10'000, 100'000}) {
        const std::string number = std::to_string(count);
        const std::string contexts = std::to_string(kLookups / count);
        const std::string few = outputFile(scratch, count, 0);
        measureWork("results" + number, {"sw-find-results", few, warnings, number, contexts}, kLookups);
        measureWork("map" + number, {"sw-find-in-map", few, warnings, number, contexts}, kLookups);
        measureWork("result" + number, {"sw-find-result", few, warnings, number, contexts}, kLookups);
    }
}

void deriveSoftware(Medians& medians) {
    const auto small = medians.find("results1000");
    const auto large = medians.find("results100000");
    if (small == medians.end() || large == medians.end()) return;
    medians["results/growth"] = large->second / small->second;
    medians["nlogn/growth"] = std::log(100'000) / std::log(1'000);  // per lookup
}

void countSoftware(const std::filesystem::path& scratch, Medians& medians) {
    const std::string file = outputFile(scratch, 5'000, 10);
    const double nothing = instructionsOf({"nothing"});
    medians["swread/instructions"] = instructionsOf({"sw-read", file, warningsFile(scratch)}) - nothing;
    medians["swexpat/instructions"] = instructionsOf({"read-expat", file}) - nothing;
}

}  // namespace zavbench
