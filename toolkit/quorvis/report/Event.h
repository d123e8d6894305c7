#pragma once

#include <cstdint>
#include <string>

namespace toolkit::quorvis {

// What an event is about; the names in the warnings file are "permission", "limit-depth" and so on.
enum class EventCode : std::uint8_t {
    Permission,
    Io,
    LimitDepth,
    LimitEntries,
    LimitBytes,
    LimitMatches,
    LimitMemory,
    Aborted,
    Deadline,
    Loop,
    SpecialFile,
    RemoteSkipped,
    Denied,
    Parse,
    UndefinedVariable,
    Unresolved,
    Config,
    Encoding,
    Unsupported,
    Sandbox,  // the scanner could not give up all that it does not need
    Invalid,  // a signatures file that was refused
};

// Something that a user of the results must know. guid and leaf are added by whoever evaluates.
struct Event {
    EventCode code{};
    std::string path;  // of the file in question; empty when there is none
    std::string text;  // a sentence without a full stop
    std::string guid;  // of the signature; empty when it concerns them all
    std::string leaf;  // the id of the leaf, or its kind when it has none
};

}  // namespace toolkit::quorvis
