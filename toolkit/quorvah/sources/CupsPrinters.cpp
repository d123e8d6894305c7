#include "toolkit/quorvah/sources/CupsPrinters.h"

#include "kest/Ascii.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxPrinters = 100'000;

void setValue(std::string_view line, CupsPrinter& printer) {
    const std::string_view key = nextWord(line);
    const std::string_view value = trimmed(line);
    if (key == "Info") printer.description = value;
    if (key == "Location") printer.location = value;
    if (key == "MakeModel") printer.model = value;
    if (key == "DeviceURI") printer.uri = value;
    if (key == "State") printer.state = value;
    if (key == "Shared") printer.shared = kest::equalsIgnoringCase(value, "Yes");
}

// "600dpi" or "600x1200dpi".
void setResolution(std::string_view value, PrinterAbilities& abilities) {
    constexpr std::uint64_t kMost = 100'000;
    if (!value.ends_with("dpi")) return;
    value.remove_suffix(3);
    std::string_view second = value;
    const Count horizontal = readCount(takeField(second, 'x'));
    const Count vertical = second.empty() ? horizontal : readCount(second);
    if (horizontal.value_or(kMost) >= kMost || vertical.value_or(kMost) >= kMost) return;
    abilities.horizontalResolution = static_cast<unsigned>(*horizontal);
    abilities.verticalResolution = static_cast<unsigned>(*vertical);
}

}  // namespace

std::vector<CupsPrinter> parsePrinters(std::string_view text) {
    std::vector<CupsPrinter> printers;
    bool inside = false;
    for (std::string_view line; nextLine(text, line);) {
        line = trimmed(line);
        const bool isDefault = line.starts_with("<DefaultPrinter ");
        if (line.starts_with("</")) {
            inside = false;
        } else if (isDefault || line.starts_with("<Printer ")) {
            inside = printers.size() < kMaxPrinters;
            if (!inside) continue;
            nextWord(line);
            line = trimmed(line);
            if (line.ends_with('>')) line.remove_suffix(1);
            printers.emplace_back();
            printers.back().name = trimmed(line);
            printers.back().isDefault = isDefault;
        } else if (inside) {
            setValue(line, printers.back());
        }
    }
    return printers;
}

// "laser|Laser in room 5:rm=host:rp=laser:"
std::vector<CupsPrinter> parsePrintcap(std::string_view text) {
    std::vector<CupsPrinter> printers;
    for (std::string_view line; nextLine(text, line) && printers.size() < kMaxPrinters;) {
        line = trimmed(line);
        if (line.empty() || line.front() == '#' || line.front() == ':') continue;
        std::string_view names = takeField(line, ':');
        CupsPrinter printer;
        printer.name = takeField(names, '|');
        printer.description = names;
        printers.push_back(std::move(printer));
    }
    return printers;
}

PrinterAbilities parsePpd(std::string_view text) {
    PrinterAbilities abilities;
    if (text.starts_with("*PPD-Adobe")) abilities.duplex = false;
    for (std::string_view line; nextLine(text, line);) {
        if (!line.starts_with('*')) continue;
        const std::string_view key = takeField(line, ':');
        const std::string_view value = trimmed(line);
        if (key == "*DefaultResolution") setResolution(value, abilities);
        if (key == "*ColorDevice" && (value == "True" || value == "False")) abilities.color = value == "True";
        if (key.starts_with("*OpenUI *Duplex") || key == "*DefaultDuplex") abilities.duplex = true;
    }
    return abilities;
}

std::string withoutCredentials(std::string_view uri) {
    uri = uri.substr(0, uri.find('?'));
    const std::size_t authority = uri.find("://");
    if (authority == std::string_view::npos) return std::string(uri);
    const std::size_t begin = authority + 3;
    const std::size_t end = uri.find('/', begin);
    const std::size_t at = uri.substr(0, end).rfind('@');
    if (at == std::string_view::npos || at < begin) return std::string(uri);
    return std::string(uri.substr(0, begin)) + std::string(uri.substr(at + 1));
}

}  // namespace toolkit::quorvah
