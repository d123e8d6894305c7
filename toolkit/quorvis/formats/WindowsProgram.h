#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// The headers of a program or library for Windows. The file is not trusted.
struct WindowsProgram {
    struct Section {
        std::string name;
        std::uint64_t address = 0;  // in memory, relative to the base
        std::uint64_t size = 0;     // in the file
        std::uint64_t offset = 0;
        bool writable = false;
    };
    std::vector<Section> sections;
    std::uint64_t base = 0;       // the address at which the program is loaded
    std::uint64_t resources = 0;  // relative address; 0 when there are none

    // Where a relative address is in the file.
    std::optional<std::uint64_t> offsetOf(std::uint64_t address) const;

    // None if the file is not such a program, or if its headers are damaged; then `damaged` is set.
    static std::optional<WindowsProgram> read(const RandomAccessFile& file, bool& damaged);
};

}  // namespace toolkit::quorvis
