#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace zavtest {

// The number of descriptors that the process has open.
inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

}  // namespace zavtest
