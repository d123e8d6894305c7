// Facts: values that are not empty, in the output of inventory tools.
#pragma once

#include <string_view>

namespace zavbench {

// In the output of the hardware scanner: elements with text. A list of values is one fact.
double factsInXml(std::string_view text);

// In JSON: numbers, truth values and texts that are not empty. Of an object with "field" and "data", which lscpu prints, it is
// the latter only.
double factsInJson(std::string_view text);

// In lines of texts, each after the first colon that a blank follows: "CPU: dual core". "N/A" and messages count, too.
double factsAfterColons(std::string_view text);

// In lines of words that two blanks or a tab separate.
double factsInColumns(std::string_view text);

}  // namespace zavbench
