#include "toolkit/quorvis/facts/Accounts.h"

#include <charconv>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

namespace {

// Calls `take` with the name and number of each user until it returns false.
template <class Take>
void forEachUser(const Root& root, const Take& take) {
    const std::string text = root.read("/etc/passwd").value_or("");
    std::string_view rest = text;
    for (std::string_view line; nextLine(rest, line);) {
        const std::string_view name = takeField(line, ':');
        takeField(line, ':');
        const std::string_view number = takeField(line, ':');
        std::uint32_t uid = 0;
        const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), uid);
        const bool valid = error == std::errc() && end == number.data() + number.size();
        if (valid && !take(name, uid)) return;
    }
}

}  // namespace

std::optional<std::uint32_t> userNumber(const Root& root, std::string_view name) {
    std::optional<std::uint32_t> found;
    forEachUser(root, [&](std::string_view user, std::uint32_t number) {
        if (user == name) found = number;
        return !found;
    });
    return found;
}

std::map<std::uint32_t, std::string> userNames(const Root& root) {
    std::map<std::uint32_t, std::string> names;
    forEachUser(root, [&names](std::string_view user, std::uint32_t number) {
        names.emplace(number, user);
        return true;
    });
    return names;
}

}  // namespace toolkit::quorvis
