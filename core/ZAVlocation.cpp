#include "core/ZAVlocation.h"

#include <cstring>
#include <string_view>

#include "core/Paths.h"
#include "core/StdioFile.h"
#include "kest/Text.h"

namespace zav {

namespace {

constexpr const char* kPath = "/etc/zav/zav.ini";
constexpr const char* kRead = "ZAVLocation::getSystemLocation()";
constexpr const char* kConstruct = "ZAVLocation::ZAVLocation()";
constexpr int kLineSize = 1024;  // a longer line is read as several lines

// The text after the key and one optional blank; null if the line does not begin with the key.
char* valueOf(char* line, std::string_view key) {
    if (std::strncmp(line, key.data(), key.size()) != 0) return nullptr;
    char* const value = line + key.size();
    return *value == ' ' ? value + 1 : value;
}

bool lists(char* names, const char* wanted) {
    char* rest = nullptr;
    for (const char* name = strtok_r(names, ":", &rest); name != nullptr;
         name = strtok_r(nullptr, ":", &rest)) {
        if (std::strcmp(name, wanted) == 0) return true;
    }
    return false;
}

}  // namespace

ZAVlocation::ZAVlocation(ZAVlog* log, const char* exploiterName, const wchar_t* dir) : log_(orSilent(log)) {
    const std::wstring systemLocation = getSystemLocation(exploiterName);
    if (dir != nullptr) {
        std::wstring given = dir;
        normalizeDir(given);
        if (given != systemLocation) {
            // Hosts match this message byte for byte, "different that" included.
            log_.traceMID(kConstruct, "Default location [%S] is different that specified one [%S]",
                          systemLocation.c_str(), dir);
        }
        location_ = given;
    } else {
        location_ = systemLocation;
    }
    normalizeDir(location_);
    log_.traceMAX(kConstruct, "ZAV location [%S]", location_.c_str());
}

std::wstring ZAVlocation::getSystemLocation(const char* exploiterName) {
    log_.traceMAX(kRead, "Checking ZAV location..");
    std::wstring home;
    const StdioFile file = openForReading(kPath);
    log_.traceMAX(kRead, "Opening a file [%s]", kPath);
    if (file == nullptr) {
        log_.traceMIN("ZAVLocation::getSystemLocation", "Can't open file [%s]", kPath);
        return home;
    }
    char line[kLineSize];
    while (std::fgets(line, sizeof line, file.get()) != nullptr) readLine(line, exploiterName, home);
    return home;
}

void ZAVlocation::readLine(char* line, const char* exploiterName, std::wstring& home) {
    const std::size_t length = std::strlen(line);
    if (length != 0 && line[length - 1] == '\n') line[length - 1] = '\0';
    if (const char* const value = valueOf(line, "ZAV_HomeDirectory =")) {
        home = kest::widen(std::string(value) + "/bin");
    }
    if (char* const names = valueOf(line, "ZAV_Exploiters =")) {
        if (lists(names, exploiterName)) registered_ = 1;
    }
}

void ZAVlocation::normalizeDir(std::wstring& dir) const {
    collapseSlashes(dir);
}

}  // namespace zav
