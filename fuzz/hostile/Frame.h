// Runs a scanner on trees and inputs that mean no good, and judges how it took them.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace hostile {

// Numbers that come again with the same seed.
class Random {
  public:
    explicit Random(std::uint64_t seed) : numbers_(seed) {}

    // Below `bound`, which is not 0.
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(numbers_() % bound); }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <class List>
    const auto& pick(const List& list) {
        return list[below(std::size(list))];
    }

  private:
    std::mt19937_64 numbers_;
};

// A scanner that was run.
struct Run {
    int status = -1;  // its exit status; -1 when it was ended by a signal or did not end
    bool ended = true;
    std::chrono::milliseconds time{0};
    std::string said;  // on both of its streams, up to a bound
    std::string command;
};

// Runs a program with its output in `directory`; it is killed after `most`. Sanitizers leave their reports there.
Run run(const std::string& program, const std::vector<std::string>& arguments,
        const std::filesystem::path& directory, std::chrono::seconds most);

// What is wrong; empty when nothing is.
using Verdict = std::string;

// Of the run itself: that it ended in time with one of these statuses, and without a sanitizer's report.
Verdict judgeRun(const Run& run, const std::vector<int>& statuses, const std::filesystem::path& directory);
// Of a file that it wrote: that it is there, well-formed, not too large, and without `canary`, the text of files that are
// none of its business.
Verdict judgeOutput(const std::filesystem::path& file, const std::string& canary);

// Plays one case in an empty directory. Sets `command` to what a person would type to see it again.
using Play =
    std::function<Verdict(Random& random, const std::filesystem::path& directory, std::string& command)>;

// main() of a program NAME ITERATIONS SECONDS SEED DIRECTORY: plays so many cases, or for so long, whichever ends first.
// A case that fails stays in DIRECTORY. Returns the exit status.
int playAll(int count, char** arguments, const Play& play);

}  // namespace hostile
