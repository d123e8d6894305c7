// Builds SMBIOS tables for tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"

namespace toolkit::quorvah {

// A structure whose fields are zero until they are set. Offsets are those of the standard.
class TableStructure {
  public:
    TableStructure(unsigned type, std::size_t length, unsigned handle) : bytes_(length, '\0') {
        set(0, 1, type);
        set(1, 1, length);
        set(2, 2, handle);
    }
    TableStructure& set(std::size_t offset, std::size_t width, std::uint64_t number) {
        for (std::size_t i = 0; i < width; ++i)
            bytes_.at(offset + i) = static_cast<char>(number >> (8 * i) & 0xFFU);
        return *this;
    }
    // Adds a string, and writes its number to the field.
    TableStructure& text(std::size_t offset, const std::string& text) {
        strings_.push_back(text);
        return set(offset, 1, strings_.size());
    }
    std::string bytes() const {
        std::string all = bytes_;
        for (const std::string& text : strings_) all += text + '\0';
        return all + std::string(strings_.empty() ? 2 : 1, '\0');
    }

  private:
    std::string bytes_;
    std::vector<std::string> strings_;
};

// Writes the structures, followed by the end of the table, as the table of a machine.
inline void writeSmbios(const zavtest::ScratchDir& tree, const std::vector<TableStructure>& structures) {
    std::string table;
    for (const TableStructure& structure : structures) table += structure.bytes();
    tree.write("sys/firmware/dmi/tables/DMI", table + TableStructure(127, 4, 0xFEFF).bytes());
    tree.write("sys/firmware/dmi/tables/smbios_entry_point",
               std::string("_SM3_\x55\x18\x03\x06\x00", 10) + std::string(14, '\0'));
}

}  // namespace toolkit::quorvah
