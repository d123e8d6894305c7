#include "tests/hw/Toolkit.h"

namespace hwtest {

Toolkit::Toolkit(const std::string& name) : path_(directory_.path() / name) {
    std::filesystem::create_directories(path_);
}

void Toolkit::scannerIs(const std::string& program) const {
    std::filesystem::remove(scanner());
    std::filesystem::create_symlink(std::filesystem::path(HW_SCANNERS) / program / "quorvah", scanner());
}

void Toolkit::scannerWrites(const std::string& output) const {
    scannerIs("CopyOutput");
    put("output.xml", output);
}

std::filesystem::path Toolkit::put(const std::string& name, const std::string& content) const {
    const auto file = path_ / name;
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

}  // namespace hwtest
