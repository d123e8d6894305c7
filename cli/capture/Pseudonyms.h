// Replaces what identifies a machine and its users in recorded files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cli/capture/RecordedFiles.h"
#include "cli/scan/HardwareInventory.h"

namespace zavcli {

// The private values of an inventory and what stands for them. A value is replaced by one of the same length and form:
// digits by digits, letters by letters. The same value has the same pseudonym everywhere. The key is random and not kept.
class Pseudonyms {
  public:
    // Takes the serial numbers, addresses and names from the inventory, except names of system accounts, and of the
    // system's groups in this /etc/group. Throws Failure if the system provides no random numbers.
    explicit Pseudonyms(const HardwareInventory& inventory, std::string_view groupFile = {});

    // The text with pseudonyms. Upper and lower case do not matter. Values of fewer than eight characters are replaced
    // as whole words only.
    std::string replaced(std::string_view text) const;

    // Replaces the values in contents, in paths and in the targets of links. Empties files with records of logins, tables
    // of network addresses and settings of users, which have private values beyond those of the inventory.
    RecordedFiles replaced(const RecordedFiles& files) const;

  private:
    struct Value {
        std::string original;  // in lower case
        std::string pseudonym;
        bool anywhere = false;  // also within a word
    };

    void collect(const Group& group, const std::vector<std::string>& common);
    void add(std::string_view value, bool isUuid);
    void addValue(std::string original, std::string pseudonym, bool anywhere);
    std::string pseudonymOf(std::string_view value) const;
    const Value* match(std::string_view text, std::size_t at) const;

    std::string key_;
    std::vector<Value> values_;
    std::unordered_map<std::string, bool> known_;
    std::unordered_map<std::uint32_t, std::vector<std::size_t>> byStart_;  // the longest first
};

}  // namespace zavcli
