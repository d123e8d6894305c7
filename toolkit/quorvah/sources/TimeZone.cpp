#include "toolkit/quorvah/sources/TimeZone.h"

#include <sys/auxv.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

#include "kest/Descriptor.h"
#include "toolkit/machine/text/ByteOrder.h"

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

constexpr std::string_view kRulesFile = "/etc/localtime";
constexpr std::string_view kMagic = "TZif";
constexpr std::size_t kHeaderSize = 44;
constexpr std::size_t kVersionOffset = 4;

// The size of the header and tables at the start of `bytes`, whose times have `timeSize` bytes; 0 if they are cut short.
std::size_t tablesSize(std::string_view bytes, std::size_t timeSize) {
    if (bytes.size() < kHeaderSize || !bytes.starts_with(kMagic)) return 0;
    const auto count = [bytes](std::size_t index) { return bigEndian(bytes, 20 + 4 * index, 4); };
    const std::uint64_t utcFlags = count(0), standardFlags = count(1), leapSeconds = count(2);
    const std::uint64_t transitions = count(3), types = count(4), nameBytes = count(5);
    constexpr std::size_t kTypeSize = 6;
    const std::uint64_t size = kHeaderSize + transitions * (timeSize + 1) + types * kTypeSize + nameBytes +
                               leapSeconds * (timeSize + 4) + standardFlags + utcFlags;
    return size <= bytes.size() ? static_cast<std::size_t>(size) : 0;
}

// Whether a zone file contains all that its headers announce. The C library allocates memory for what they announce.
bool isComplete(std::string_view file) {
    const std::size_t first = tablesSize(file, 4);
    return first > 0 && (file[kVersionOffset] == '\0' || tablesSize(file.substr(first), 8) > 0);
}

// A system without rules uses UTC. A tree without accounts is a copy of some files only and may simply lack the rules.
bool usesUtc(const Root& root) {
    return !root.exists(kRulesFile) && (root.live() || root.exists("/etc/passwd"));
}

// A file in memory, so that the C library reads the bytes that were checked.
kest::Descriptor memoryFile(std::string_view bytes) {
    kest::Descriptor file(::memfd_create("zone", MFD_CLOEXEC));
    if (!file.isOpen() ||
        ::write(file.number(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        return {};
    return file;
}

}  // namespace

std::optional<ZoneOffset> zoneOffset(const Root& root, std::int64_t time) {
    // The C library interprets the zone file. It silently uses UTC for a file that it cannot read, and it ignores TZ
    // in a program with raised privileges, so both are checked first.
    if (::getauxval(AT_SECURE) != 0) return std::nullopt;
    constexpr std::size_t kMaxSize = std::size_t{64} << 10;
    const std::string rules = root.read(kRulesFile, kMaxSize).value_or("");
    if (rules.empty() && usesUtc(root)) return ZoneOffset{};
    if (!isComplete(rules)) return std::nullopt;
    const kest::Descriptor file = memoryFile(rules);
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
    const std::string link = root.readLink(kRulesFile);
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
