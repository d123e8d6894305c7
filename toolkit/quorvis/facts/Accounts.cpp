#include "toolkit/quorvis/facts/Accounts.h"

#include <charconv>
#include <string>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

std::optional<std::uint32_t> userNumber(const Root& root, std::string_view name) {
    const std::string text = root.read("/etc/passwd").value_or("");
    std::string_view rest = text;
    for (std::string_view line; nextLine(rest, line);) {
        if (takeField(line, ':') != name) continue;
        takeField(line, ':');
        const std::string_view number = takeField(line, ':');
        std::uint32_t uid = 0;
        const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), uid);
        if (error == std::errc() && end == number.data() + number.size()) return uid;
    }
    return std::nullopt;
}

}  // namespace toolkit::quorvis
