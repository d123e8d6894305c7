// What the command must know of signature files. The scanner decides what they mean and whether they are valid.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zavcli {

// The names of the variables that a signature uses or presets, by its identifier in lower case.
using VariableUses = std::map<std::string, std::set<std::string>>;

// A signature as lists of signatures show it.
struct SignatureEntry {
    std::string guid;
    std::string name;       // as written, with its variables
    std::string publisher;  // empty if the signature does not name one
};

struct SignatureFile {
    std::string path;
    std::vector<SignatureEntry> entries;  // those with an identifier, in the order of the file
    std::size_t count = 0;                // the number of signatures
    // Names by identifier in lower case. Empty if the name contains variables or the identifier has several names.
    std::map<std::string, std::string> names;
    VariableUses variables;
    bool wellFormed = false;
    // The content of the root element, if it has the same meaning inside the root element of another file.
    std::optional<std::string> body;
};

// The files that the arguments denote. A directory stands for all *.xml files in it, sorted by name.
// Throws Failure (bad usage) for anything else that is not a file.
std::vector<std::string> signatureFilePaths(const std::vector<std::string>& arguments);

// Reads a file. If it is not well-formed, it has what precedes the error, and no body.
// Throws Failure (bad usage) if it cannot be read.
SignatureFile readSignatureFile(const std::string& path);

// The names of all signatures by identifier in lower case, by the same rule as SignatureFile::names.
std::map<std::string, std::string> namesIn(const std::vector<SignatureFile>& files);

}  // namespace zavcli
