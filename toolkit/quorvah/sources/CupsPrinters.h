// The printers that CUPS knows, from its files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

struct CupsPrinter {
    std::string name;
    std::string description;
    std::string location;
    std::string model;
    std::string uri;
    std::string state;  // "Idle", "Stopped"
    std::optional<bool> shared;
    bool isDefault = false;
};

// Parses printers.conf.
std::vector<CupsPrinter> parsePrinters(std::string_view text);

// The names and descriptions in printcap, which every user may read.
std::vector<CupsPrinter> parsePrintcap(std::string_view text);

// What a printer's PPD file says about it. Unknown numbers are 0.
struct PrinterAbilities {
    unsigned horizontalResolution = 0;  // dpi
    unsigned verticalResolution = 0;
    std::optional<bool> color;
    std::optional<bool> duplex;
};
PrinterAbilities parsePpd(std::string_view text);

// The URI without user, password and parameters.
std::string withoutCredentials(std::string_view uri);

}  // namespace toolkit::quorvah
