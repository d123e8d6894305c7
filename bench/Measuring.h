// Measuring with Google Benchmark, which repeats and interleaves the works and computes medians.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

// Registers a work of this program (see Worker.h) that repeats the same operation `perSample` times. Measures the CPU
// time of one operation, and the peak memory as NAME/bytes.
void measureWork(const std::string& name, const std::vector<std::string>& arguments, int perSample = 1);

// Registers a program that is run `runs` times per sample. Measures the CPU time of one run, and its duration as
// NAME/wall. The program must end with this status.
void measureProgram(const std::string& name, const std::vector<std::string>& command, int runs = 5,
                    int status = 0);

// Measures everything that is registered. Prints messages and returns false on failure.
bool measureRegistered(Medians& medians);

}  // namespace zavbench
