#pragma once

#include <string>

#include "toolkit/quorvah/sources/DeviceIdsFile.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// The host's own pci.ids or usb.ids, whatever tree is scanned, or that of the directory that --ids names.
// Without the file it knows no name.
class DeviceNameDatabase {
  public:
    DeviceNameDatabase(const Options& options, const char* fileName);
    DeviceNameDatabase(const DeviceNameDatabase&) = delete;
    DeviceNameDatabase& operator=(const DeviceNameDatabase&) = delete;

    DeviceIdsFile& ids() { return ids_; }

  private:
    std::string text_;
    DeviceIdsFile ids_;
};

// What ScanInfo tells of the databases: "pci.ids 2023.04.10;usb.ids 2023.01.16", without those that are
// missing.
std::string deviceNameDatabaseVersions(const Options& options);

}  // namespace toolkit::quorvah
