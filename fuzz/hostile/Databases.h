// Package databases of every kind, in the form that they ought to have, and such as no program writes.
#pragma once

#include <string>
#include <vector>

#include "fuzz/hostile/Frame.h"

namespace hostile {

struct Seed {
    std::string path;
    std::string content;
};

// One of each kind, with a package.
std::vector<Seed> packageDatabases(Random& random);

}  // namespace hostile
