#pragma once

#include <string>

namespace tessa {

// Thrown when a document cannot be read. Line 0 stands for the file as a whole.
struct Fault {
    std::string message;
    int line = 0;
};

}  // namespace tessa
