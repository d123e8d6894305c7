#pragma once

#include <memory>
#include <memory_resource>
#include <string>
#include <vector>

#include "toolkit/quorvis/formats/XmlReader.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// The content of a signatures file.
struct SignatureFile {
    std::unique_ptr<std::pmr::monotonic_buffer_resource> texts;  // the memory that the signatures point into
    std::vector<Signature> signatures;                           // none when there are problems
    // The problems that make the file invalid, in document order: "sig.xml:3:7: File lacks the attribute "path"".
    std::vector<std::string> problems;
    // Valid elements that are probably mistakes, in the same form.
    std::vector<std::string> warnings;
    // Signatures that were dropped (Evaluation/onInvalid=skip), and an unexpected encoding of the file.
    std::vector<Event> events;
};

// Reads and validates a signatures file. It is also a problem if the file cannot be read.
SignatureFile readSignatureFile(const std::string& path, const Settings& settings);
// Validates a document that was read from `path`.
SignatureFile readSignatureFile(const std::string& path, const DocumentText& document,
                                const Settings& settings);

}  // namespace toolkit::quorvis
