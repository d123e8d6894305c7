#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// One structure of the SMBIOS table. Offsets count from the structure's first byte, as in the standard's
// tables; what lies behind the structure's end reads as 0 or empty, for older firmware writes shorter ones.
struct SmbiosStructure {
    unsigned type = 0;
    unsigned handle = 0;
    std::string_view formatted;  // the header and the fields
    std::vector<std::string_view> strings;

    std::uint64_t number(std::size_t offset, std::size_t width) const;
    unsigned byte(std::size_t offset) const { return static_cast<unsigned>(number(offset, 1)); }
    unsigned word(std::size_t offset) const { return static_cast<unsigned>(number(offset, 2)); }
    bool has(std::size_t offset, std::size_t width) const;
    // The string that the byte at `offset` numbers.
    std::string_view string(std::size_t offset) const;
};

// The SMBIOS table of the scanned machine, which mostly only root may read.
class Smbios {
  public:
    explicit Smbios(const Root& root);
    // Of a table's bytes, for what does not come from a tree.
    explicit Smbios(std::string table);
    Smbios(const Smbios&) = delete;
    Smbios& operator=(const Smbios&) = delete;

    // In the order of the table. Nothing behind a structure that does not hold together.
    const std::vector<SmbiosStructure>& structures() const { return structures_; }
    std::vector<const SmbiosStructure*> ofType(unsigned type) const;

    // "3.2"; empty when the tree does not tell.
    const std::string& version() const { return version_; }

  private:
    void parse();

    std::string table_;
    std::string version_;
    std::vector<SmbiosStructure> structures_;
};

}  // namespace toolkit::quorvah
