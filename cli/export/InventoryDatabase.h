// Inventories of machines in a SQLite database. docs/command.md describes its tables.
#pragma once

#include <string>

#include "cli/diff/SavedInventory.h"
#include "cli/export/SqliteDatabase.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

class InventoryDatabase {
  public:
    // Reads the database in this file, or begins a new one. Throws Failure if the file is anything else.
    explicit InventoryDatabase(const std::string& path);

    // Puts the inventory into the place of an earlier one of this host. `software` may be null. Throws Failure.
    void put(const std::string& host, const SavedInventory& hardware, const SoftwareInventory* software);

    // The content for the file. Throws Failure.
    std::string content();

  private:
    void makeTable(const std::string& name, const std::string& columns);
    void makeGroupTable(const Group& group);
    void putHost(const std::string& host, const SavedInventory& hardware);
    void putGroup(const std::string& host, const Group& group);
    void putInstance(const std::string& host, const Group& group, std::size_t number);
    void putSoftware(const std::string& host, const SoftwareInventory& software);

    SqliteDatabase database_;
};

}  // namespace zavcli
