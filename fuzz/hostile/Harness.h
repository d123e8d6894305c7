// Runs a scanner on hostile trees and inputs and checks its behavior.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace hostile {

// Random numbers that depend on the seed only.
class Random {
  public:
    explicit Random(std::uint64_t seed) : numbers_(seed) {}

    // A number below `bound`. REQUIRES: bound > 0.
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(numbers_() % bound); }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <class List>
    const auto& pick(const List& list) {
        return list[below(std::size(list))];
    }

  private:
    std::mt19937_64 numbers_;
};

// The outcome of a run of a scanner.
struct Run {
    int status = -1;  // exit status; -1 if a signal or the time limit ended it
    bool ended = true;
    std::chrono::milliseconds time{0};
    std::string messages;  // the start of what it printed to standard output and standard error
    std::string command;
};

// Runs a program and kills it after `maxTime`. Its messages and the reports of sanitizers are written to `directory`.
Run run(const std::string& program, const std::vector<std::string>& arguments,
        const std::filesystem::path& directory, std::chrono::seconds maxTime);

// A description of what is wrong; empty if nothing is.
using Problem = std::string;

// Checks that the run ended in time with one of these statuses and without a report of a sanitizer.
Problem checkRun(const Run& run, const std::vector<int>& statuses, const std::filesystem::path& directory);
// Checks that an output file exists, is well-formed and not too large, and does not contain `canary`, the content of
// files outside the root.
Problem checkOutput(const std::filesystem::path& file, const std::string& canary);

// Runs one case in an empty directory. Sets `command` to the command line that repeats it.
using Case =
    std::function<Problem(Random& random, const std::filesystem::path& directory, std::string& command)>;

// main() of a program NAME ITERATIONS SECONDS SEED DIRECTORY: runs that many cases, or as many as the time allows. The
// files of a failed case are kept in DIRECTORY. Returns the exit status.
int runCases(int argumentCount, char** arguments, const Case& runOne);

}  // namespace hostile
