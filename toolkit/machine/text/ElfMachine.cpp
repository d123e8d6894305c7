#include "toolkit/machine/text/ElfMachine.h"

namespace toolkit {

namespace {

struct ElfMachine {
    unsigned number;
    bool wide;  // 64 bits
    bool littleEndian;
    std::string_view name;
};

constexpr ElfMachine kElfMachines[] = {
    {2, false, false, "sparc"},       {3, false, true, "i686"},          {4, false, false, "m68k"},
    {15, false, false, "parisc"},     {15, true, false, "parisc64"},     {18, false, false, "sparc64"},
    {22, false, false, "s390"},       {40, false, false, "armv7b"},      {42, false, true, "sh4"},
    {43, true, false, "sparc64"},     {50, true, true, "ia64"},          {92, false, false, "openrisc"},
    {183, true, false, "aarch64_be"}, {258, false, true, "loongarch32"}, {0x9026, true, true, "alpha"},
    {8, false, false, "mips"},        {8, false, true, "mipsel"},        {8, true, false, "mips64"},
    {8, true, true, "mips64el"},      {20, false, false, "ppc"},         {21, true, false, "ppc64"},
    {21, true, true, "ppc64le"},      {22, true, false, "s390x"},        {40, false, true, "armv7l"},
    {62, true, true, "x86_64"},       {62, false, true, "x86_64"},       {183, true, true, "aarch64"},
    {243, false, true, "riscv32"},    {243, true, true, "riscv64"},      {258, true, true, "loongarch64"},
};

}  // namespace

std::string_view machineOfElf(std::string_view header) {
    if (header.size() < 20 || !header.starts_with("\x7f"
                                                  "ELF"))
        return {};
    const auto byte = [header](std::size_t at) {
        return static_cast<unsigned>(static_cast<unsigned char>(header[at]));
    };
    const bool littleEndian = byte(5) == 1;
    const unsigned number = littleEndian ? byte(18) | byte(19) << 8U : byte(18) << 8U | byte(19);
    for (const ElfMachine& machine : kElfMachines) {
        if (machine.number == number && machine.wide == (byte(4) == 2) &&
            machine.littleEndian == littleEndian) {
            return machine.name;
        }
    }
    return {};
}

}  // namespace toolkit
