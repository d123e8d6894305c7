#pragma once

#include <string>
#include <vector>

namespace zavcli {

struct CheckedSignatures {
    bool valid = true;  // all of them
    std::string text;   // what the scanner says of each file
};

// Asks the scanner of that path whether the files are valid. Throws Failure when the scanner cannot tell.
CheckedSignatures checkSignatures(const std::string& scanner, const std::vector<std::string>& paths);

}  // namespace zavcli
