#include "toolkit/quorvah/sources/JedecMakers.h"

#include <algorithm>
#include <iterator>

namespace toolkit::quorvah {

namespace {

struct Maker {
    unsigned page;
    unsigned number;
    std::string_view name;
};

constexpr Maker kMakers[] = {
    {0, 0x01, "AMD"},
    {0, 0x04, "Fujitsu"},
    {0, 0x07, "Hitachi"},
    {0, 0x09, "Intel"},
    {0, 0x10, "NEC"},
    {0, 0x15, "NXP"},
    {0, 0x17, "Texas Instruments"},
    {0, 0x18, "Kioxia"},
    {0, 0x1C, "Mitsubishi"},
    {0, 0x20, "STMicroelectronics"},
    {0, 0x24, "IBM"},
    {0, 0x29, "Microchip"},
    {0, 0x2C, "Micron"},
    {0, 0x2D, "SK hynix"},
    {0, 0x32, "Panasonic"},
    {0, 0x41, "Infineon"},
    {0, 0x42, "Macronix"},
    {0, 0x45, "Western Digital"},
    {0, 0x49, "Xilinx"},
    {0, 0x4E, "Samsung"},
    {0, 0x54, "Hewlett-Packard"},
    {0, 0x5A, "Winbond"},
    {0, 0x6E, "Altera"},
    {0, 0x70, "Qualcomm"},
    {1, 0x11, "Dataram"},
    {1, 0x14, "SMART Modular"},
    {1, 0x18, "Kingston"},
    {1, 0x32, "Mushkin"},
    {1, 0x3A, "PNY"},
    {1, 0x3F, "Broadcom"},
    {1, 0x40, "Viking"},
    {1, 0x4E, "Unigen"},
    {1, 0x4F, "Transcend"},
    {1, 0x7A, "Apacer"},
    {2, 0x1E, "Corsair"},
    {2, 0x27, "MIPS"},
    {2, 0x7E, "Elpida"},
    {3, 0x0B, "Nanya"},
    {3, 0x16, "Netlist"},
    {3, 0x25, "Kingmax"},
    {3, 0x6B, "NVIDIA"},
    {4, 0x43, "Ramaxel"},
    {4, 0x4B, "ADATA"},
    {4, 0x4D, "G.Skill"},
    {4, 0x6F, "Team Group"},
    {5, 0x02, "Patriot"},
    {5, 0x1B, "Crucial"},
    {5, 0x51, "Qimonda"},
    {6, 0x1E, "Andes"},
    {9, 0x09, "SiFive"},
    {11, 0x37, "T-Head"},
    {12, 0x1F, "Ventana"},
    {14, 0x10, "SpacemiT"},
};

}  // namespace

std::string_view jedecMaker(unsigned page, unsigned number) {
    const auto* const found = std::ranges::find_if(
        kMakers, [=](const Maker& maker) { return maker.page == page && maker.number == number; });
    return found == std::end(kMakers) ? std::string_view() : found->name;
}

}  // namespace toolkit::quorvah
