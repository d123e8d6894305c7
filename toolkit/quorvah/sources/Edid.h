#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace toolkit::quorvah {

// What a display tells about itself in the first 128 bytes of its EDID (VESA E-EDID 1.4). Unknown numbers are 0, unknown
// texts empty.
struct Edid {
    std::string maker;         // three letters
    std::string product;       // four hexadecimal digits
    std::string name;          // the display's own text
    std::string serialNumber;  // its text, or else its number
    unsigned week = 0;         // of manufacture
    unsigned year = 0;         // of manufacture, or the year of the model
    std::string version;       // "1.4"
    bool digital = false;
    unsigned width = 0;  // mm
    unsigned height = 0;
    unsigned diagonal = 0;
    unsigned horizontalPixels = 0;  // of the preferred mode
    unsigned verticalPixels = 0;
};

// Nothing if the bytes are no EDID or their checksum is wrong.
std::optional<Edid> readEdid(std::string_view bytes);

}  // namespace toolkit::quorvah
