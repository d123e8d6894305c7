#pragma once

#include <string>

#include "core/ZAVlog.h"

namespace zav {

// Where the toolkit is installed, and whether the calling product is registered with it: what
// /etc/zav/zav.ini says, read anew by every object. A directory that the caller gives wins over the file's.
//
// Two kinds of lines of the file count, both from the first column on, each with one optional blank behind
// the sign:
//     ZAV_HomeDirectory = /opt/zav         the scanners are in /opt/zav/bin; the last such line wins
//     ZAV_Exploiters = product:other       names of registered products
class ZAVlocation {
  public:
    // REQUIRES: exploiterName is not null. log and dir may be null.
    ZAVlocation(ZAVlog* log, const char* exploiterName, const wchar_t* dir);

    // The directory of the scanners; empty when none is known.
    std::wstring getLocation() const { return location_; }
    // 1 when the file lists the exploiter, else 0.
    int isRegistered() const { return registered_; }

    // The file's directory of scanners, empty without a file or without a home directory in it. Notes
    // registration.
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
