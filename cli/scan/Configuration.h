#pragma once

#include <istream>
#include <string>
#include <vector>

namespace zavcli {

constexpr const char* kConfigurationFile = "/etc/zav/zav.ini";

// What is wrong with the lines of a configuration file that the library, which wants its keys to the letter,
// reads otherwise than they were meant; each with its line number and the remedy.
std::vector<std::string> configurationFaults(std::istream& lines);

}  // namespace zavcli
