#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/report/SharedBuffer.h"

namespace toolkit::quorvah {

// What the scanner keeps of a group: its instances, and how gathering went.
struct GroupResult {
    const Group* group = nullptr;
    std::shared_ptr<const GroupData> data;  // that holds the instances; none when they have been rendered:
    std::string_view xml;                   // as they stand in the output file
    std::shared_ptr<const void> memory;     // that the xml stands in
    std::size_t instances = 0;
    std::string reason;  // why the group is not complete; empty for a complete one
    std::vector<std::string> warnings;
    std::chrono::milliseconds elapsed{0};
    GroupState state = GroupState::Complete;
};

// The result of a report, without its instances: how many there are and how gathering went.
GroupResult resultWithoutXml(const GroupData& data);

// A rendered result is handed from one process to another of the same program as a frame, which tells where in the texts that
// both share its xml stands.
std::string toFrame(const GroupResult& result, std::uint64_t xmlAt);

// The length of the frame at the front of `bytes`; 0 when even that is cut off.
std::size_t frameLength(std::string_view bytes);

// Fills a result from a whole frame; its group stays. False when the bytes are no result.
bool readFrame(std::string_view frame, const SharedBuffer& texts, GroupResult& result);

}  // namespace toolkit::quorvah
