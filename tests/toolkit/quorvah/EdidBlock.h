// An EDID for tests.
#pragma once

#include <string>

namespace toolkit::quorvah {

// Sets the last byte so that all bytes add up to 0.
inline std::string withChecksum(std::string block) {
    unsigned total = 0;
    for (std::size_t i = 0; i < 127; ++i) total += static_cast<unsigned char>(block[i]);
    block[127] = static_cast<char>((256 - total % 256) % 256);
    return block;
}

// A display of 1920 x 1200 pixels and 518 x 324 mm with a name and a serial number, made in week 23 of 2012.
inline std::string edidBlock() {
    std::string block(128, '\0');
    block.replace(0, 8, std::string("\x00\xff\xff\xff\xff\xff\xff\x00", 8));
    block.replace(8, 12, std::string("\x10\xac\xc4\xa0\x78\x56\x34\x12\x17\x16\x01\x04", 12));
    block.replace(20, 5, std::string("\xa5\x34\x20\x78\x3a", 5));
    block.replace(
        54, 18, std::string("\x28\x3c\x80\xa0\x70\xb0\x23\x40\x30\x20\x36\x00\x06\x44\x21\x00\x00\x1e", 18));
    block.replace(72, 18, std::string("\x00\x00\x00\xff\x00YMYH12AB\n    ", 18));
    block.replace(90, 18,
                  std::string("\x00\x00\x00\xfc\x00"
                              "DELL U2412M\n ",
                              18));
    return withChecksum(block);
}

}  // namespace toolkit::quorvah
