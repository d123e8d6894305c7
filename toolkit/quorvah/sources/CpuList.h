#pragma once

#include <string_view>
#include <vector>

namespace toolkit::quorvah {

// The numbers in a CPU list of the kernel ("0-3,8,10-11"), sorted and without duplicates. Empty if the text has
// another form or a number exceeds what the kernel supports.
std::vector<int> readCpuList(std::string_view text);

// Whether a sorted list contains the number.
bool contains(const std::vector<int>& sorted, int number);

}  // namespace toolkit::quorvah
