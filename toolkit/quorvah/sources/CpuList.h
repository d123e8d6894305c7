// Sets of CPUs and of NUMA nodes, as the kernel writes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The numbers in a list ("0-3,8,10-11"), sorted and without duplicates. Empty if the text has another form or a number
// exceeds what the kernel supports.
std::vector<int> readCpuList(std::string_view text);

// The numbers of the bits that are set in a mask ("ff", "00000001,80000000"), sorted. A mask is written in groups of 32
// bits, the highest group first. Empty if the text has another form or a number exceeds what the kernel supports.
std::vector<int> readCpuMask(std::string_view text);

// The set in two files, the one a list and the other a mask. Old kernels write only the mask.
std::vector<int> readCpuSet(const Root& root, const std::string& listFile, const std::string& maskFile);

// The list of sorted numbers, as readCpuList() reads it.
std::string cpuListText(const std::vector<int>& sorted);

// Whether a sorted list contains the number.
bool contains(const std::vector<int>& sorted, int number);

}  // namespace toolkit::quorvah
