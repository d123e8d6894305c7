#pragma once

#include <string>
#include <string_view>

#include "toolkit/quorvah/Report.h"

namespace quorvah {

// A report as bytes, to be handed from one process to another of the same program: its length, then its
// content.
std::string frameOf(const Report& report);

// The length of the frame at the front of `bytes`, its length field included; 0 when even that is cut off.
std::size_t frameLength(std::string_view bytes);

// Fills an empty report from a whole frame. False when the bytes are no report of its group.
bool readFrame(std::string_view frame, Report& report);

}  // namespace quorvah
