// What the hardware scanner decodes for single groups: descriptions of displays, login records, settings, logs and
// configurations. The first byte of the input names the decoder, the rest is what it is given. Each ends with values
// within their documented bounds.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "toolkit/quorvah/sources/Accounts.h"
#include "toolkit/quorvah/sources/CpuTimes.h"
#include "toolkit/quorvah/sources/CupsPrinters.h"
#include "toolkit/quorvah/sources/Edid.h"
#include "toolkit/quorvah/sources/GuestConfig.h"
#include "toolkit/quorvah/sources/Gvdb.h"
#include "toolkit/quorvah/sources/GzipText.h"
#include "toolkit/quorvah/sources/HyperVPairs.h"
#include "toolkit/quorvah/sources/InitScripts.h"
#include "toolkit/quorvah/sources/InputDevices.h"
#include "toolkit/quorvah/sources/Logins.h"
#include "toolkit/quorvah/sources/MemoryMaker.h"
#include "toolkit/quorvah/sources/PackageLogs.h"
#include "toolkit/quorvah/sources/ScreenSaverSettings.h"
#include "toolkit/quorvah/sources/ServiceUnits.h"

namespace {

namespace quorvah = toolkit::quorvah;

void must(bool holds) {
    if (!holds) std::abort();
}

void readDisplay(std::string_view bytes) {
    const auto edid = quorvah::readEdid(bytes);
    if (!edid) return;
    must(edid->maker.empty() || edid->maker.size() == 3);
    must(edid->product.size() == 4 && edid->week <= 54 && edid->year <= 1990 + 255);
    must(edid->horizontalPixels < 4096 && edid->verticalPixels < 8192);
    must(edid->width < 4096 && edid->height < 4096 && edid->name.size() <= 13);
}

void readLogins(std::string_view bytes) {
    for (const std::size_t size : {std::size_t{384}, std::size_t{400}}) {
        const auto login = quorvah::newestLogin(bytes, size);
        if (!login) continue;
        must(!login->user.empty() && login->user.size() <= 32 && login->terminal.size() <= 32);
        must(login->host.size() <= 256 && login->time > 0 && login->time < 4'102'444'800);
    }
    const std::size_t size = quorvah::loginRecordSize(bytes.size());
    must(size == 384 || size == 400);
}

void readSettingsDatabase(std::string_view bytes) {
    const quorvah::GvdbFile file(bytes);
    for (const char* const key : {"/org/gnome/desktop/screensaver/lock-enabled", "/a/b", "/", ""}) {
        const auto value = file.find(key);
        must(!value || !value->boolean || !value->number);
    }
    for (const char* const desktop : {"gnome", "mate", "cinnamon"})
        quorvah::readDconfSettings(bytes, desktop);
}

void readPackedLog(std::string_view bytes) {
    constexpr std::size_t kLimit = std::size_t{1} << 20;
    std::string text;
    quorvah::gunzip(bytes, kLimit, text);
    must(text.size() <= kLimit);
    quorvah::parseDpkgLog(text);
}

void readLogs(std::string_view text) {
    for (const quorvah::Upgrade& upgrade : quorvah::parseDpkgLog(text))
        must(!upgrade.version.empty() && upgrade.version != upgrade.previous);
    for (const quorvah::Upgrade& upgrade : quorvah::parsePacmanLog(text)) must(upgrade.time != 0);
}

void readGuests(std::string_view text) {
    quorvah::parseDomain(text);
    quorvah::parseProxmox(text);
    quorvah::parseLxc(text);
    quorvah::readXfceSettings(text);
}

void readInput(std::string_view text) {
    for (const unsigned bits : {32U, 64U}) {
        for (const quorvah::InputDevice& device : quorvah::parseInputDevices(text, bits)) {
            must(!device.id.empty() && device.keys.count(0, 1023) <= 1024);
            device.absolute.has(0xFFFFFFFF);
        }
    }
}

void readPrinters(std::string_view text) {
    quorvah::parsePrinters(text);
    quorvah::parsePrintcap(text);
    must(quorvah::parsePpd(text).horizontalResolution < 100'000);
    must(quorvah::withoutCredentials(text).size() <= text.size());
}

void readAccounts(std::string_view text) {
    for (const quorvah::Account& account : quorvah::parseAccounts(text)) must(!account.name.empty());
    quorvah::parseAccountGroups(text);
    quorvah::parseAccountStatus(text);
}

void readServices(std::string_view text) {
    quorvah::ServiceUnit unit;
    quorvah::readServiceUnit(text, unit);
    must(unit.program.size() <= text.size());
    must(quorvah::scriptDescription(text).size() <= text.size());
}

void readOthers(std::string_view text) {
    quorvah::memoryMaker(std::string(text));
    quorvah::hyperVValue(text, "PhysicalHostName");
    quorvah::readKdeSettings(text);
    quorvah::readXScreenSaverSettings(text);
    for (const quorvah::CpuTimes& times : quorvah::readCpuStatistics(text, 100).cpus) {
        const auto load = quorvah::loadBetween({}, times);
        must(!load || *load <= 100);
    }
}

constexpr std::array kDecoders = {readDisplay, readLogins, readSettingsDatabase, readPackedLog, readLogs,
                                  readGuests,  readInput,  readPrinters,         readAccounts,  readServices,
                                  readOthers};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kDecoders[data[0] % kDecoders.size()]({reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
