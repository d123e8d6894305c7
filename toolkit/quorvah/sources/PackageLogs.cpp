#include "toolkit/quorvah/sources/PackageLogs.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/report/NaturalOrder.h"
#include "toolkit/quorvah/sources/GzipText.h"
#include "toolkit/quorvah/sources/TimeZone.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxLog = std::size_t{32} << 20;
constexpr std::size_t kMaxUpgrades = 100'000;
const std::string kLogs = "/var/log/";

// Two or four digits.
int number(std::string_view text) {
    const Count value = readCount(text);
    return value && text.size() <= 4 ? static_cast<int>(*value) : -1;
}

// "[2026-01-01T12:00:00+0100]", or "[2026-01-01 12:00]" of older versions, which have no zone.
std::int64_t pacmanTime(std::string_view& line, bool& hasZone) {
    if (!line.starts_with('[')) return 0;
    line.remove_prefix(1);
    const std::string_view stamp = takeField(line, ']');
    if (stamp.size() < 16) return 0;
    const std::string_view date = stamp.substr(0, 10);
    hasZone = stamp.size() >= 24;
    if (!hasZone) return secondsOf(date, std::string(stamp.substr(11, 5)) + ":00");
    const std::int64_t seconds = secondsOf(date, stamp.substr(11, 8));
    const int hours = number(stamp.substr(20, 2));
    const int minutes = number(stamp.substr(22, 2));
    if (seconds == 0 || hours < 0 || minutes < 0) return 0;
    const std::int64_t east = (std::int64_t{hours} * 60 + minutes) * 60;
    return stamp[19] == '-' ? seconds + east : seconds - east;
}

// Converts local times. Rules change at full quarters of an hour, and many upgrades follow each other within one.
class LocalTimes {
  public:
    explicit LocalTimes(const Root& root) : root_(root) {}

    void toUtc(Upgrade& upgrade) {
        constexpr std::int64_t kQuarter = 900;
        if (!offset_ || quarter_ != upgrade.time / kQuarter) {
            quarter_ = upgrade.time / kQuarter;
            offset_ = zoneOffset(root_, upgrade.time);
        }
        upgrade.hasZone = offset_.has_value();
        if (offset_) upgrade.time -= std::int64_t{offset_->minutes} * 60;
    }

  private:
    const Root& root_;
    std::int64_t quarter_ = 0;
    std::optional<ZoneOffset> offset_;
};

// The content of a log, unpacked if its name ends with ".gz".
std::string readLog(const Root& root, const std::string& path, bool& complete) {
    const int excesses = root.excesses();
    std::string content = root.read(path, kMaxLog).value_or("");
    if (root.excesses() > excesses) complete = false;
    if (!path.ends_with(".gz")) return content;
    std::string text;
    if (!gunzip(content, kMaxLog, text)) complete = false;
    return text;
}

// The newest first: dpkg.log, dpkg.log.1, dpkg.log.2.gz.
std::vector<std::string> logNames(const Root& root, std::string_view base) {
    std::vector<std::string> names = root.list(kLogs);
    std::erase_if(names, [base](std::string_view name) {
        if (!name.starts_with(base)) return true;
        name.remove_prefix(base.size());
        if (name.ends_with(".gz")) name.remove_suffix(3);
        return !name.empty() && (name.front() != '.' || !readCount(name.substr(1)));
    });
    std::ranges::sort(names, naturallyBefore);
    return names;
}

}  // namespace

std::int64_t secondsOf(std::string_view date, std::string_view time) {
    if (date.size() != 10 || date[4] != '-' || date[7] != '-') return 0;
    if (time.size() != 8 || time[2] != ':' || time[5] != ':') return 0;
    using namespace std::chrono;
    const int parts[] = {number(date.substr(0, 4)), number(date.substr(5, 2)), number(date.substr(8, 2)),
                         number(time.substr(0, 2)), number(time.substr(3, 2)), number(time.substr(6, 2))};
    if (std::ranges::any_of(parts, [](int part) { return part < 0; })) return 0;
    const year_month_day calendar{year{parts[0]}, month{static_cast<unsigned>(parts[1])},
                                  day{static_cast<unsigned>(parts[2])}};
    if (!calendar.ok() || parts[3] > 23 || parts[4] > 59 || parts[5] > 60) return 0;
    const std::int64_t hours = std::int64_t{sys_days(calendar).time_since_epoch().count()} * 24 + parts[3];
    return (hours * 60 + parts[4]) * 60 + parts[5];
}

// "2026-11-01 06:25:01 upgrade bash:amd64 5.2.15-2 5.2.15-3"
std::vector<Upgrade> parseDpkgLog(std::string_view log) {
    std::vector<Upgrade> upgrades;
    for (std::string_view line; nextLine(log, line) && upgrades.size() < kMaxUpgrades;) {
        const std::string_view date = nextWord(line);
        const std::string_view time = nextWord(line);
        if (nextWord(line) != "upgrade") continue;
        Upgrade upgrade;
        std::string_view package = nextWord(line);
        upgrade.name = takeField(package, ':');
        upgrade.architecture = package;
        upgrade.previous = nextWord(line);
        upgrade.version = nextWord(line);
        upgrade.time = secondsOf(date, time);
        const bool changed = upgrade.version != upgrade.previous && upgrade.version != "<none>";
        if (upgrade.time != 0 && !upgrade.version.empty() && changed) upgrades.push_back(std::move(upgrade));
    }
    return upgrades;
}

// "[2026-01-01T12:00:00+0100] [ALPM] upgraded bash (5.2-1 -> 5.2-2)"
std::vector<Upgrade> parsePacmanLog(std::string_view log) {
    std::vector<Upgrade> upgrades;
    for (std::string_view line; nextLine(log, line) && upgrades.size() < kMaxUpgrades;) {
        Upgrade upgrade;
        upgrade.time = pacmanTime(line, upgrade.hasZone);
        std::string_view word = nextWord(line);
        if (word.starts_with('[')) word = nextWord(line);
        if (word != "upgraded" || upgrade.time == 0) continue;
        upgrade.name = nextWord(line);
        std::string_view previous = nextWord(line);
        if (previous.starts_with('(')) previous.remove_prefix(1);
        upgrade.previous = previous;
        if (nextWord(line) != "->") continue;
        std::string_view version = nextWord(line);
        if (version.ends_with(')')) version.remove_suffix(1);
        upgrade.version = version;
        upgrades.push_back(std::move(upgrade));
    }
    return upgrades;
}

UpgradeLogs readUpgrades(const Root& root, std::int64_t since) {
    UpgradeLogs logs;
    LocalTimes convert(root);
    for (const std::string& name : logNames(root, "dpkg.log")) {
        std::vector<Upgrade> upgrades = parseDpkgLog(readLog(root, kLogs + name, logs.complete));
        const bool older = !upgrades.empty() && upgrades.front().time < since;
        for (Upgrade& upgrade : upgrades) {
            root.checkTime();
            convert.toUtc(upgrade);
            if (upgrade.time >= since && logs.dpkg.size() < kMaxUpgrades)
                logs.dpkg.push_back(std::move(upgrade));
        }
        if (older) break;
    }
    for (Upgrade& upgrade : parsePacmanLog(readLog(root, kLogs + "pacman.log", logs.complete))) {
        if (upgrade.time >= since) logs.pacman.push_back(std::move(upgrade));
    }
    return logs;
}

}  // namespace toolkit::quorvah
