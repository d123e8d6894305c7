#include "tests/support/Toolkit.h"

#include <utility>

namespace zavtest {

Toolkit::Toolkit(std::string scanner, std::string programs, const std::string& name)
    : scanner_(std::move(scanner)), programs_(std::move(programs)), path_(directory_.path() / name) {
    std::filesystem::create_directories(path_);
}

void Toolkit::scannerIs(const std::string& program) const {
    std::filesystem::remove(scanner());
    std::filesystem::create_symlink(programs_ / program / scanner_, scanner());
}

std::filesystem::path Toolkit::put(const std::string& name, const std::string& content) const {
    const auto file = path_ / name;
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

}  // namespace zavtest
