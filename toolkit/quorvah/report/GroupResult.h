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

// The result of gathering a group: how gathering went, and its instances either as data or as XML.
struct GroupResult {
    const Group* group = nullptr;
    std::shared_ptr<const GroupData> data;  // the instances; null if they are in `xml`
    std::string_view xml;                   // the instances as XML
    std::shared_ptr<const void> memory;     // owns `xml`
    std::size_t instances = 0;
    std::string reason;  // empty if the group is complete
    std::vector<std::string> warnings;
    std::chrono::milliseconds elapsed{0};
    GroupState state = GroupState::Complete;
};

// The result for `data` with neither data nor XML.
GroupResult resultWithoutXml(const GroupData& data);

// The result for a group that could not be read, for this reason.
GroupResult unreadResult(std::string_view reason, std::chrono::steady_clock::duration elapsed);

// The result as bytes that another process of this program can read. `xmlAt` is the offset of the XML in their shared
// buffer.
std::string toFrame(const GroupResult& result, std::uint64_t xmlAt);

// The length of the frame at the start of `bytes`; 0 if not even the length is complete.
std::size_t frameLength(std::string_view bytes);

// Reads a complete frame into `result`, except for its group. Returns false if the bytes are not a valid frame.
bool readFrame(std::string_view frame, const SharedBuffer& texts, GroupResult& result);

}  // namespace toolkit::quorvah
