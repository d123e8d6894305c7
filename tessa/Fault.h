#pragma once

#include <string>

namespace tessa {

// Thrown when a document cannot be read: what is wrong, and in which line; 0 for the file as a whole.
struct Fault {
    std::string message;
    int line = 0;
};

}  // namespace tessa
