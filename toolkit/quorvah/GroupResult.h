#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "toolkit/quorvah/Report.h"

namespace toolkit::quorvah {

// What the scanner keeps of a group: its instances as they stand in the output file, and how gathering went.
struct GroupResult {
    const Group* group = nullptr;
    std::string xml;
    std::size_t instances = 0;
    std::string reason;  // why the group is cut short; empty for a complete one
    std::vector<std::string> warnings;
    std::chrono::milliseconds elapsed{0};
};

// A result is handed from one process to another of the same program as a frame: a head, and then the xml.
std::string frameHead(const GroupResult& result);

// The length of the frame at the front of `bytes`, head included; 0 when even that is cut off.
std::size_t frameLength(std::string_view bytes);

// Fills a result from a whole frame; its group stays. False when the bytes are no result.
bool readFrame(std::string&& frame, GroupResult& result);

}  // namespace toolkit::quorvah
