#include "cli/scan/InstalledFiles.h"

#include <fmt/format.h>

#include <filesystem>

#include "cli/scan/Toolkit.h"

namespace zavcli {

std::string installedPaths() {
    const std::filesystem::path command = commandPath();
    const std::filesystem::path shared =
        (command.parent_path() / ZAV_CATALOGUE).lexically_normal().parent_path();
    std::error_code error;
    if (!std::filesystem::exists(shared / "hardware.schema.json", error)) return "";
    std::string text = "\n\nInstalled:\n";
    for (const std::string& directory : bundledDirectories(command)) {
        if (!containsProgram(directory, kHardwareScanner.program)) continue;
        text += fmt::format("  scanners    {}\n", directory);
        break;
    }
    return text + fmt::format("  signatures  {}\n  schemas     {}", (shared / "signatures").string(),
                              shared.string());
}

}  // namespace zavcli
