#pragma once

#include <string_view>
#include <vector>

namespace toolkit::quorvah {

// The numbers in one of the kernel's lists ("0-3,8,10-11"), ascending and each once. Nothing of a list that
// is not written so, or that reaches beyond what any kernel supports.
std::vector<int> readCpuList(std::string_view text);

// Whether a sorted list holds the number.
bool contains(const std::vector<int>& sorted, int number);

}  // namespace toolkit::quorvah
