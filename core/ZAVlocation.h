#pragma once

#include <string>

#include "core/ZAVlog.h"

namespace zav {

// Finds out where the toolkit is installed and whether the calling product is registered with it. Every object reads
// /etc/zav/zav.ini once. A directory given by the caller takes precedence over the one in the file.
//
// Two kinds of lines are recognised. They start in the first column; one blank after the sign is optional:
//     ZAV_HomeDirectory = /opt/zav         the scanners are in /opt/zav/bin; the last such line applies
//     ZAV_Exploiters = product:other       names of registered products
class ZAVlocation {
  public:
    // REQUIRES: exploiterName is not null. log and dir may be null.
    ZAVlocation(ZAVlog* log, const char* exploiterName, const wchar_t* dir);

    // The directory of the scanners; empty if unknown.
    std::wstring getLocation() const { return location_; }
    // 1 if the file lists the exploiter, otherwise 0.
    int isRegistered() const { return registered_; }

    // Reads the file. Returns its directory of scanners, empty if there is no file or no home directory in it, and
    // records the registration.
    std::wstring getSystemLocation(const char* exploiterName);

    void normalizeDir(std::wstring& dir) const;
    std::wstring getDirectorySeparator() const { return L"/"; }

  private:
    void readLine(char* line, const char* exploiterName, std::wstring& home);

    std::wstring location_;
    ZAVlog& log_;
    int registered_ = 0;
};

}  // namespace zav
