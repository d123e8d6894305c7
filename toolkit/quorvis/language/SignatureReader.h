#pragma once

#include <memory>
#include <memory_resource>
#include <string>
#include <vector>

#include "toolkit/quorvis/formats/DocumentText.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// What a signatures file holds.
struct SignatureFile {
    std::unique_ptr<std::pmr::monotonic_buffer_resource> texts;  // the memory that the signatures point into
    std::vector<Signature> signatures;                           // none when there are problems
    // What makes the file invalid, in its order: "sig.xml:3:7: File has no attribute 'path'". Empty when it is
    // valid.
    std::vector<std::string> problems;
    // What is valid and yet hardly meant, in the same form.
    std::vector<std::string> warnings;
    // Of signatures that were dropped (Evaluation/onInvalid=skip) and of the file's encoding.
    std::vector<Event> events;
};

// Reads and validates a signatures file. A file that cannot be read is a problem as well.
SignatureFile readSignatureFile(const std::string& path, const Settings& settings);
// The same of one whose bytes are there already.
SignatureFile readSignatureFile(const std::string& path, const DocumentText& document,
                                const Settings& settings);

}  // namespace toolkit::quorvis
