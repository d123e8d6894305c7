#include "toolkit/quorvah/sources/TimeZone.h"

#include <sys/auxv.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

namespace toolkit::quorvah {

namespace {

// Sets the C library's local time to a zone file until it is destroyed.
class LocalZone {
  public:
    explicit LocalZone(const std::string& file) {
        const char* const before = std::getenv("TZ");
        if (before != nullptr) before_ = before;
        ::setenv("TZ", (":" + file).c_str(), 1);
        ::tzset();
    }
    ~LocalZone() {
        if (before_) {
            ::setenv("TZ", before_->c_str(), 1);
        } else {
            ::unsetenv("TZ");
        }
        ::tzset();
    }
    LocalZone(const LocalZone&) = delete;
    LocalZone& operator=(const LocalZone&) = delete;

  private:
    std::optional<std::string> before_;
};

constexpr long kSecondsPerMinute = 60;
constexpr long kMaxOffsetMinutes = 26L * 60;  // no zone exceeds this

}  // namespace

std::optional<ZoneOffset> zoneOffset(const Root& root, std::int64_t time) {
    // The C library interprets the zone file. It silently uses UTC for a file that it cannot read, and it ignores TZ
    // in a program with raised privileges, so both are checked first.
    if (::getauxval(AT_SECURE) != 0) return std::nullopt;
    const std::string localtime = "/etc/localtime";
    constexpr std::size_t kMaxSize = std::size_t{64} << 10;
    if (!root.read(localtime, kMaxSize).value_or("").starts_with("TZif")) return std::nullopt;
    const kest::Descriptor file = root.open(localtime);
    const std::string name = "/proc/self/fd/" + std::to_string(file.number());
    if (!file.isOpen() || ::access(name.c_str(), R_OK) != 0) return std::nullopt;
    const LocalZone zone(name);
    const std::time_t seconds = time;
    std::tm local{};
    if (::localtime_r(&seconds, &local) == nullptr) return std::nullopt;
    const long minutes = local.tm_gmtoff / kSecondsPerMinute;
    if (minutes < -kMaxOffsetMinutes || minutes > kMaxOffsetMinutes) return std::nullopt;
    return ZoneOffset{minutes, local.tm_isdst > 0};
}

std::string zoneName(const Root& root) {
    const std::string link = root.readLink("/etc/localtime");
    constexpr std::string_view kDirectory = "zoneinfo/";
    const std::size_t directory = link.rfind(kDirectory);
    if (directory == std::string::npos) return root.readLine("/etc/timezone");
    std::string name = link.substr(directory + kDirectory.size());
    for (const char* const variant : {"posix/", "right/"}) {
        if (name.starts_with(variant)) name.erase(0, std::string_view(variant).size());
    }
    return name;
}

}  // namespace toolkit::quorvah
