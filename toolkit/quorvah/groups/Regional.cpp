#include <initializer_list>
#include <string>
#include <vector>

#include "schema/groups/Regional.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/machine/text/ShellVariables.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/TimeZone.h"

namespace toolkit::quorvah {

namespace {

// The variables of several files, because distributions differ in the file that they use.
class Settings {
  public:
    Settings(const Root& root, std::initializer_list<const char*> files) {
        for (const char* const file : files) variables_.emplace_back(root.read(file).value_or(""));
    }

    // The first value found for any of the names.
    std::string value(std::initializer_list<const char*> names) const {
        for (const ShellVariables& variables : variables_) {
            for (const char* const name : names) {
                std::string value = variables.value(name);
                if (!value.empty()) return value;
            }
        }
        return {};
    }

  private:
    std::vector<ShellVariables> variables_;
};

// language[_territory][.codeset][@modifier]
void setLocale(const Root& root, Instance& regional) {
    const std::string locale =
        Settings(root, {"/etc/locale.conf", "/etc/default/locale"}).value({"LC_ALL", "LANG"});
    regional.set("Locale", locale);
    std::string_view rest = locale;
    std::string_view place = takeField(rest, '@');
    std::string_view codeSet = place;
    place = takeField(codeSet, '.');
    regional.set("Language", takeField(place, '_'));
    regional.set("Territory", place);
    regional.set("CodeSet", codeSet);
}

void setTimeZone(const Root& root, Instance& regional) {
    regional.set("TimeZoneName", zoneName(root));
    const std::optional<std::int64_t> now = observationTime(root);
    if (!now) return;
    const std::optional<ZoneOffset> offset = zoneOffset(root, *now);
    if (!offset) return;
    regional.set("CurrentTimeZone", offset->minutes);
    regional.set("DaylightInEffect", offset->daylight);
}

void setKeyboard(const Root& root, Instance& regional) {
    const Settings settings(root, {"/etc/default/keyboard", "/etc/vconsole.conf"});
    regional.set("KeyboardLayout", settings.value({"XKBLAYOUT", "KEYMAP"}));
    regional.set("KeyboardModel", settings.value({"XKBMODEL"}));
}

// The third line of /etc/adjtime.
void setHardwareClock(const Root& root, Instance& regional) {
    const std::string adjtime = root.read("/etc/adjtime").value_or("");
    std::string_view rest = adjtime;
    std::string_view line;
    for (int i = 0; i < 3; ++i) nextLine(rest, line);
    if (line == "UTC" || line == "LOCAL") regional.set("HardwareClock", line);
}

constexpr const char* kSources[] = {"/etc"};

void gather(GatheringContext& context, GroupData& data) {
    data.addOne([&root = context.root()](Instance& regional) {
        setLocale(root, regional);
        setTimeZone(root, regional);
        setKeyboard(root, regional);
        setHardwareClock(root, regional);
    });
}

}  // namespace

constexpr Group kRegional{.displayName = "Regional",
                          .xmlName = "Regional",
                          .fields = schema::kRegional.fields,
                          .gather = gather,
                          .sources = kSources};

}  // namespace toolkit::quorvah
