#pragma once

#include <optional>
#include <string>
#include <utility>

#include "toolkit/quorvah/sources/DeviceIdsFile.h"

namespace toolkit::quorvah {

// The file pci.ids or usb.ids of the host, or of another directory. It does not depend on the scanned tree. Without the file
// all names are unknown.
class DeviceNameDatabase {
  public:
    // Of the host if `directory` is empty.
    DeviceNameDatabase(std::string directory, std::string fileName)
        : directory_(std::move(directory)), fileName_(std::move(fileName)) {}
    DeviceNameDatabase(const DeviceNameDatabase&) = delete;
    DeviceNameDatabase& operator=(const DeviceNameDatabase&) = delete;

    // Reads the file when it is called for the first time, which takes longer than gathering most groups.
    DeviceIdsFile& ids();
    // "pci.ids 2023.04.10"; empty if there is no file. Reads only its start.
    std::string version() const;

  private:
    std::string readFile(std::size_t limit) const;

    std::string directory_;
    std::string fileName_;
    std::string text_;
    std::optional<DeviceIdsFile> ids_;
};

}  // namespace toolkit::quorvah
