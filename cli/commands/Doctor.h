// Whether an inventory can work on this machine, found out by trying each step.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zavcli {

enum class Verdict { Ok, Note, Problem };

struct Check {
    Verdict verdict = Verdict::Ok;
    std::string subject;
    std::string finding;  // what was found, and what to do about it
};

// `toolkit` is the directory given on the command line.
std::vector<Check> examine(const std::optional<std::string>& toolkit);

// One line per check.
std::string checkLines(const std::vector<Check>& checks);

bool inventoryCanWork(const std::vector<Check>& checks);

}  // namespace zavcli
