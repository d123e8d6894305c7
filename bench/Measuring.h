// How a figure is measured: Google Benchmark repeats, interleaves and takes the medians.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

// Registers a work of this program (see Worker.h) that does the same thing `perSample` times over: its CPU time
// of one of them, and its peak memory as NAME/bytes.
void measureWork(const std::string& name, const std::vector<std::string>& arguments, int perSample = 1);

// Registers a whole program, started `runs` times a sample: the CPU time of one run, and its duration as
// NAME/wall.
void measureProgram(const std::string& name, const std::vector<std::string>& command, int runs = 5);

// Measures everything that is registered. False when something failed; messages say what.
bool measureRegistered(Medians& medians);

}  // namespace zavbench
