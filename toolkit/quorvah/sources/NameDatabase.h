#pragma once

#include <string>

#include "toolkit/quorvah/sources/IdsFile.h"
#include "toolkit/quorvah/sources/Scan.h"

namespace toolkit::quorvah {

// The host's own pci.ids or usb.ids, whatever tree is scanned, or that of the directory that --ids names.
// Without the file it knows no name.
class NameDatabase {
  public:
    NameDatabase(const Options& options, const char* fileName);
    NameDatabase(const NameDatabase&) = delete;
    NameDatabase& operator=(const NameDatabase&) = delete;

    IdsFile& ids() { return ids_; }

  private:
    std::string text_;
    IdsFile ids_;
};

// What ScanInfo tells of the databases: "pci.ids 2023.04.10;usb.ids 2023.01.16", without those that are
// missing.
std::string nameDatabaseVersions(const Options& options);

}  // namespace toolkit::quorvah
