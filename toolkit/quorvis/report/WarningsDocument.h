#pragma once

#include <string>

#include "toolkit/quorvis/report/EventList.h"

namespace toolkit::quorvis {

// The events as an XML document in pure ASCII, one line for each.
std::string warningsDocument(const EventList& events);

}  // namespace toolkit::quorvis
