// Signatures files as far as the command must know them; what they mean is for the scanner to say.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zavcli {

// The names of the variables that are used or preset, by the identifier in lower case of the signature.
using VariableUses = std::map<std::string, std::set<std::string>>;

struct SignaturesFile {
    std::string path;
    std::size_t count = 0;  // of signatures
    // By identifier in lower case; empty when a name has variables, or signatures of one identifier have several.
    std::map<std::string, std::string> names;
    VariableUses variables;
    bool wellFormed = false;
    // What stands between the tags of the root, when it means the same between the tags of another file.
    std::optional<std::string> body;
};

// The files that are meant by the arguments: a directory stands for all *.xml in it, in the order of their
// names. Throws Failure (bad usage) for what is neither a file nor such a directory.
std::vector<std::string> signaturesPaths(const std::vector<std::string>& arguments);

// One that is not well-formed has what stands in front of the fault, and no body. Throws Failure (bad usage)
// when it cannot be read.
SignaturesFile readSignaturesFile(const std::string& path);

// Notes a name for an identifier, unless it is no plain one, or not the only one.
void noteName(std::map<std::string, std::string>& names, const std::string& guid, const std::string& name);

}  // namespace zavcli
