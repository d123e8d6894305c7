#pragma once

#include <string>
#include <vector>

namespace toolkit::quorvah {

// What a configuration file asks for.
struct Configuration {
    std::vector<std::string> groups;  // the names as they stand, in order
    std::string error;                // what is wrong with the file, and where; empty when all is well
    std::vector<std::string> warnings;
};

// Reads the names of all elements <Group Name="..."/>, wherever in the document they stand. Nothing else in
// the document matters, but it must be well-formed XML without a document type declaration. Throws
// std::bad_alloc when memory runs out.
Configuration readConfiguration(const std::string& path);

}  // namespace toolkit::quorvah
