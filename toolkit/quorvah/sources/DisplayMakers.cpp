#include "toolkit/quorvah/sources/DisplayMakers.h"

#include <utility>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::pair<std::string_view, std::string_view> kCommon[] = {
    {"ACI", "ASUS"},
    {"ACR", "Acer"},
    {"AOC", "AOC"},
    {"APP", "Apple"},
    {"AUO", "AU Optronics"},
    {"AUS", "ASUS"},
    {"BNQ", "BenQ"},
    {"BOE", "BOE"},
    {"CMN", "Innolux"},
    {"CMO", "Chi Mei Optoelectronics"},
    {"CSO", "CSOT"},
    {"DEL", "Dell"},
    {"ENC", "Eizo"},
    {"FUS", "Fujitsu Siemens"},
    {"GBT", "Gigabyte"},
    {"GSM", "LG Electronics"},
    {"HPN", "HP"},
    {"HWP", "HP"},
    {"IBM", "IBM"},
    {"IVM", "Iiyama"},
    {"LEN", "Lenovo"},
    {"LGD", "LG Display"},
    {"LPL", "LG Philips"},
    {"MSI", "MSI"},
    {"NEC", "NEC"},
    {"PHL", "Philips"},
    {"RHT", "Red Hat"},
    {"SAM", "Samsung"},
    {"SDC", "Samsung Display"},
    {"SEC", "Seiko Epson"},
    {"SHP", "Sharp"},
    {"SNY", "Sony"},
    {"VSC", "ViewSonic"},
};

}  // namespace

DisplayMakers::DisplayMakers(const Options& options) {
    const Root host;
    if (!options.ids.empty()) {
        text_ = host.read(options.ids + "/pnp.ids").value_or("");
        return;
    }
    for (const char* const path : {"/usr/share/misc/pnp.ids", "/usr/share/hwdata/pnp.ids"}) {
        text_ = host.read(path).value_or("");
        if (!text_.empty()) return;
    }
}

std::string_view DisplayMakers::name(std::string_view id) const {
    if (id.empty()) return {};
    std::string_view rest = text_;
    for (std::string_view line; nextLine(rest, line);) {
        if (line.starts_with(id) && line.substr(id.size()).starts_with('\t'))
            return trimmed(line.substr(id.size()));
    }
    for (const auto& [known, name] : kCommon) {
        if (known == id) return name;
    }
    return {};
}

}  // namespace toolkit::quorvah
