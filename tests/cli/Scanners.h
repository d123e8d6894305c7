// The test scanners. Each is a program `quorvah` or `quorvis` in a directory of its own.
#pragma once

#include <string>

namespace zavtest {

// The directory of the scanner with the source scanners/NAME.cpp.
inline std::string scanner(const std::string& name) {
    return std::string(ZAVTEST_SCANNERS) + "/" + name;
}

// An output file with two processors, an operating system and special characters.
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
