// The scanners of these tests, each a program `quorvah` in a directory of its own.
#pragma once

#include <string>

namespace zavtest {

// The directory of the scanner whose source is scanners/NAME.cpp.
inline std::string scanner(const std::string& name) {
    return std::string(ZAVTEST_SCANNERS) + "/" + name;
}

// An output file of two processors, one system and odd characters.
inline constexpr const char* kPreparedOutput =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<Inventory>"
    "<Processor><DeviceID>cpu0</DeviceID><Name>A, &quot;B&quot; &amp; "
    "&lt;C&gt;</Name><CoreId>0</CoreId></Processor>"
    "<OperatingSystem><Name>linux</Name><Caption>Gr\xc3\xb6\xc3\x9f "
    "&#128512;</Caption><Notes>one&#10;two</Notes>"
    "<Empty/></OperatingSystem>"
    "<Processor><DeviceID>cpu1</DeviceID><Name>A, &quot;B&quot; &amp; "
    "&lt;C&gt;</Name><CoreId>1</CoreId></Processor>"
    "</Inventory>";

}  // namespace zavtest
