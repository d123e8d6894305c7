// Package databases of every kind, well-formed or as no program writes them.
#pragma once

#include <string>
#include <vector>

#include "fuzz/hostile/Harness.h"

namespace hostile {

struct Seed {
    std::string path;
    std::string content;
};

// One file per kind of database, with at least one package.
std::vector<Seed> packageDatabases(Random& random);

}  // namespace hostile
