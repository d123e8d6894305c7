#include "cli/report/PageTemplate.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "cli/scan/Toolkit.h"
#include "cli/system/Failure.h"

namespace zavcli {

std::string readPageTemplate() {
    const std::filesystem::path path = (commandPath().parent_path() / ZAV_PAGE).lexically_normal();
    std::ifstream file(path, std::ios::binary);
    std::string page{std::istreambuf_iterator<char>(file), {}};
    if (!file || page.empty())
        throw Failure(kExitFailed, fmt::format("cannot read the page {}; install zav again", path.string()));
    return page;
}

std::string fillPage(std::string_view page, std::string_view data) {
    const std::size_t mark = page.find(kDataMark);
    if (mark == std::string_view::npos || page.find(kDataMark, mark + 1) != std::string_view::npos)
        throw Failure(kExitFailed, "the page that comes with the command is damaged; install zav again");
    std::string text;
    text.reserve(page.size() + data.size());
    text.append(page.substr(0, mark)).append(data).append(page.substr(mark + kDataMark.size()));
    return text;
}

}  // namespace zavcli
