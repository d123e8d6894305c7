// Sample inventories for the tests of the writers.
#pragma once

#include "cli/scan/HardwareInventory.h"

namespace zavtest {

inline zavcli::HardwareInventory sampleInventory() {
    return {{"zav 0.1.0", "2026-11-21T06:14:45Z", 12, "/opt/zav/bin", ""},
            {{2,
              "Processor",
              {{{"DeviceID", "cpu0"}, {"Name", "A, \"B\" & <C>"}}, {{"DeviceID", "cpu1"}, {"Name", ""}}}},
             {3, "Memory", {{{"DeviceID", "memory"}, {"Note", "gr\xc3\xb6\xc3\x9f\xf0\x9f\x98\x80"}}}},
             {30, "Modem", {}},
             {32, "Monitor", {{}}}}};
}

// Values that need escaping.
inline zavcli::HardwareInventory oddInventory() {
    return {{"zav 0.1.0", "2026-11-21T06:14:45Z", 12, "/opt/zav/bin", "/mnt/image"},
            {{3,
              "Memory",
              {{{"Lines", "one\ntwo\r\nthree"},
                {"Quotes", "\"'`"},
                {"Markup", "]]> &amp; <!-- -->"},
                {"Blanks", "  x  "},
                {"Escape", "\x1b[31m\x01"},
                {"Commas", ",,"}}}}}};
}

}  // namespace zavtest
