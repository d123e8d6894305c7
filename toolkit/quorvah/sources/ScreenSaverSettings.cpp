#include "toolkit/quorvah/sources/ScreenSaverSettings.h"

#include <vector>

#include "toolkit/machine/text/KeyFile.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/Gvdb.h"
#include "toolkit/quorvah/sources/XmlWalk.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kMinute = 60;
constexpr std::uint64_t kHour = 3600;

std::optional<bool> readFlag(std::string_view text) {
    if (text == "true" || text == "True") return true;
    if (text == "false" || text == "False") return false;
    return std::nullopt;
}

// "0:10:00" in seconds.
Count readDuration(std::string_view text) {
    const Count hours = readCount(takeField(text, ':'));
    const Count minutes = readCount(takeField(text, ':'));
    return sum(sum(product(hours, kHour), product(minutes, kMinute)), readCount(text));
}

// The value of a line "key: value".
std::string_view resource(std::string_view text, std::string_view key) {
    for (std::string_view line; nextLine(text, line);) {
        if (takeField(line, ':') == key) return trimmed(line);
    }
    return {};
}

}  // namespace

ScreenSaverSettings readKdeSettings(std::string_view text) {
    ScreenSaverSettings settings;
    settings.active = readFlag(keyFileValue(text, "Daemon", "Autolock"));
    if (settings.active) settings.secure = settings.active;
    settings.timeout = product(readCount(keyFileValue(text, "Daemon", "Timeout")), kMinute);
    settings.lockDelay = readCount(keyFileValue(text, "Daemon", "LockGrace"));
    return settings;
}

ScreenSaverSettings readXfceSettings(std::string_view document) {
    ScreenSaverSettings settings;
    std::vector<std::string> names;  // of the properties around the current place
    XmlHandler handler;
    handler.begin = [&](const std::string& path, const XmlAttributes& attributes) {
        if (!path.ends_with("/property")) return;
        names.emplace_back(attributes.value("name"));
        std::string name;
        for (const std::string& part : names) name += "/" + part;
        const std::string_view value = attributes.value("value");
        if (name == "/saver/enabled") settings.active = readFlag(value);
        if (name == "/saver/idle-activation/delay") settings.timeout = product(readCount(value), kMinute);
        if (name == "/saver/mode") settings.executable = value;
        if (name == "/lock/enabled") settings.secure = readFlag(value);
        if (name == "/lock/saver-activation/delay") settings.lockDelay = product(readCount(value), kMinute);
    };
    handler.end = [&](const std::string& path, const std::string& /*text*/) {
        if (path.ends_with("/property") && !names.empty()) names.pop_back();
    };
    return walkXml(document, handler) ? settings : ScreenSaverSettings();
}

ScreenSaverSettings readXScreenSaverSettings(std::string_view text) {
    ScreenSaverSettings settings;
    const std::string_view mode = resource(text, "mode");
    if (!mode.empty()) settings.active = mode != "off";
    settings.secure = readFlag(resource(text, "lock"));
    settings.timeout = readDuration(resource(text, "timeout"));
    settings.lockDelay = readDuration(resource(text, "lockTimeout"));
    if (!text.empty()) settings.executable = "xscreensaver";
    return settings;
}

ScreenSaverSettings readDconfSettings(std::string_view database, std::string_view desktop) {
    const GvdbFile file(database);
    const std::string base = "/org/" + std::string(desktop) + "/";
    const bool mate = desktop == "mate";
    const std::string saver = base + (mate ? "screensaver/" : "desktop/screensaver/");
    ScreenSaverSettings settings;
    const auto flag = [&file](const std::string& key) {
        const std::optional<GvdbValue> value = file.find(key);
        return value ? value->boolean : std::nullopt;
    };
    const auto count = [&file](const std::string& key) {
        const std::optional<GvdbValue> value = file.find(key);
        return value ? value->number : std::nullopt;
    };
    settings.active = flag(saver + "idle-activation-enabled");
    settings.secure = flag(saver + "lock-enabled");
    settings.lockDelay = count(saver + "lock-delay");
    // MATE counts minutes.
    const Count delay = count(base + "desktop/session/idle-delay");
    settings.timeout = mate ? product(delay, kMinute) : delay;
    if (mate) settings.lockDelay = product(settings.lockDelay, kMinute);
    return settings;
}

}  // namespace toolkit::quorvah
