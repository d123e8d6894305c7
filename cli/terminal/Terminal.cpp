#include "cli/terminal/Terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <exception>

#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

constexpr int kMinColumns = 40;
constexpr int kDefaultColumns = 100;

int environmentColumns() {
    const char* text = std::getenv("COLUMNS");
    const std::string_view digits = text == nullptr ? "" : text;
    int columns = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), columns);
    return columns > 0 ? columns : kDefaultColumns;
}

}  // namespace

bool isCapableTerminal(int descriptor) {
    const char* term = std::getenv("TERM");
    return isatty(descriptor) != 0 && term != nullptr && *term != '\0' && std::string_view(term) != "dumb";
}

int terminalColumns(int descriptor) {
    winsize size{};
    const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return std::max(kMinColumns, known ? static_cast<int>(size.ws_col) : environmentColumns());
}

void printMessage(std::string_view text) noexcept {
    try {
        writeStandardError(fmt::format("zav: {}\n", printable(text)));
    } catch (const std::exception&) {
        writeStandardError("zav: memory ran out\n");
    }
}

}  // namespace zavcli
