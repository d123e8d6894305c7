#pragma once

#include <string>

#include "toolkit/quorvah/sources/DeviceIdsFile.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// The file pci.ids or usb.ids of the host, or of the directory in the option --ids. It does not depend on the scanned
// tree. Without the file all names are unknown.
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

// The versions of the existing databases, for ScanInfo: "pci.ids 2023.04.10;usb.ids 2023.01.16".
std::string deviceNameDatabaseVersions(const Options& options);

}  // namespace toolkit::quorvah
