// Signatures files as far as the command must know them; what they mean is for the scanner to say.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zavcli {

struct SignaturesFile {
    std::string path;
    std::size_t count = 0;                     // of signatures
    std::map<std::string, std::string> names;  // by identifier in lower case; of equal ones the first
    // What stands between the tags of the root, when it means the same between the tags of another file.
    std::optional<std::string> body;
};

// The files that are meant by the arguments: a directory stands for all *.xml in it, in the order of their
// names. Throws Failure (bad usage) for what is neither a file nor such a directory.
std::vector<std::string> signaturesPaths(const std::vector<std::string>& arguments);

// One that is not well-formed has what stands in front of the fault, and no body. Throws Failure (bad usage)
// when it cannot be read.
SignaturesFile readSignaturesFile(const std::string& path);

}  // namespace zavcli
