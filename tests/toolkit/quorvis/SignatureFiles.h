// Creates and reads signatures files for tests.
#pragma once

#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/language/SignatureReader.h"

namespace quorvistest {

using toolkit::quorvis::readSignatureFile;
using toolkit::quorvis::Settings;
using toolkit::quorvis::SignatureFile;

// Reads a file with this text. Diagnostics name it "sig.xml".
inline SignatureFile read(const std::string& text, const Settings& settings = {}) {
    const zavtest::ScratchDir dir;
    SignatureFile file = readSignatureFile(dir.write("sig.xml", text).string(), settings);
    const std::string prefix = dir.path().string() + "/";
    for (auto* const list : {&file.problems, &file.warnings}) {
        for (std::string& line : *list) {
            if (line.starts_with(prefix)) line.erase(0, prefix.size());
        }
    }
    return file;
}

inline std::string whole(const std::string& inner) {
    return "<Signatures>\n<Signature guid=\"G\" name=\"N\">" + inner + "</Signature>\n</Signatures>\n";
}

inline std::string match(const std::string& condition) {
    return whole("<Match>" + condition + "</Match>");
}

inline std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

}  // namespace quorvistest
