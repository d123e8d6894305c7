#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// One structure of the SMBIOS table. Offsets are relative to the start of the structure, as in the standard. Fields
// beyond its end read as 0 or empty, because older firmware writes shorter structures.
struct SmbiosStructure {
    unsigned type = 0;
    unsigned handle = 0;
    std::string_view formatted;  // the header and the fields
    std::vector<std::string_view> strings;

    std::uint64_t number(std::size_t offset, std::size_t width) const;
    unsigned byte(std::size_t offset) const { return static_cast<unsigned>(number(offset, 1)); }
    unsigned word(std::size_t offset) const { return static_cast<unsigned>(number(offset, 2)); }
    bool has(std::size_t offset, std::size_t width) const;
    // The string whose number is in the byte at `offset`.
    std::string_view string(std::size_t offset) const;
};

// The SMBIOS table of the scanned machine. Usually only root may read it.
class Smbios {
  public:
    explicit Smbios(const Root& root);
    // From the bytes of a table.
    explicit Smbios(std::string table);
    Smbios(const Smbios&) = delete;
    Smbios& operator=(const Smbios&) = delete;

    // In the order of the table, up to the first malformed structure.
    const std::vector<SmbiosStructure>& structures() const { return structures_; }
    std::vector<const SmbiosStructure*> ofType(unsigned type) const;

    // Whether the table ends in the middle of a structure, or has a malformed one.
    bool damaged() const { return damaged_; }

    // "3.2"; empty if it is unknown.
    const std::string& version() const { return version_; }

  private:
    void parse();

    std::string table_;
    std::string version_;
    bool damaged_ = false;
    std::vector<SmbiosStructure> structures_;
};

}  // namespace toolkit::quorvah
