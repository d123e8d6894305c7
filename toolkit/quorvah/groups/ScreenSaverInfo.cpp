#include <string>
#include <utility>
#include <vector>

#include "schema/groups/ScreenSaverInfo.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/Accounts.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/HomeFiles.h"
#include "toolkit/quorvah/sources/MountTable.h"
#include "toolkit/quorvah/sources/ScreenSaverSettings.h"

namespace toolkit::quorvah {

namespace {

class ScreenSavers {
  public:
    explicit ScreenSavers(GroupData& data) : data_(data) {}

    void addAccount(const Account& account, HomeFiles& files) {
        add(account, files, "KDE", ".config/kscreenlockerrc", readKdeSettings);
        add(account, files, "Xfce", ".config/xfce4/xfconf/xfce-perchannel-xml/xfce4-screensaver.xml",
            readXfceSettings);
        add(account, files, "XScreenSaver", ".xscreensaver", readXScreenSaverSettings);
        const std::string path = ".config/dconf/user";
        const std::optional<std::string> database = files.read(path);
        if (!database) return;
        constexpr std::pair<const char*, const char*> kDesktops[] = {
            {"gnome", "GNOME"}, {"mate", "MATE"}, {"cinnamon", "Cinnamon"}};
        for (const auto& [name, desktop] : kDesktops)
            addSettings(account, readDconfSettings(*database, name), desktop, path);
    }

  private:
    void add(const Account& account, HomeFiles& files, const char* desktop, const std::string& path,
             ScreenSaverSettings (*read)(std::string_view)) {
        const std::optional<std::string> text = files.read(path);
        if (text) addSettings(account, read(*text), desktop, path);
    }

    void addSettings(const Account& account, const ScreenSaverSettings& settings, const char* desktop,
                     const std::string& path) {
        if (settings.empty()) return;
        Instance& saver = data_.add(account.name);
        saver.set("ScreenSaverActive", settings.active);
        saver.set("ScreenSaverSecure", settings.secure);
        saver.set("ScreenSaverTimeout", settings.timeout);
        saver.set("ScreenSaverExecutable", settings.executable);
        saver.set("LockDelay", settings.lockDelay);
        saver.set("Desktop", desktop);
        saver.set("Source", account.home + "/" + path);
    }

    GroupData& data_;
};

constexpr const char* kSources[] = {"/etc/passwd"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const SystemAccounts system(root);
    const std::vector<Mount> mounts = readMounts(root);
    ScreenSavers savers(data);
    bool denied = false;
    bool refused = false;
    for (const Account& account : readAccounts(root)) {
        if (account.uid != 0 && system.contains(account.uid)) continue;
        HomeFiles files(root, mounts, account.home, account.uid);
        savers.addAccount(account, files);
        denied = denied || files.denied();
        refused = refused || files.refused();
    }
    if (denied) data.partial("permission");
    if (refused) data.partial("home-refused");
}

}  // namespace

constexpr Group kScreenSaverInfo{.displayName = "Screen Saver Info",
                                 .xmlName = "ScreenSaverInfo",
                                 .fields = schema::kScreenSaverInfo.fields,
                                 .gather = gather,
                                 .sources = kSources};

}  // namespace toolkit::quorvah
