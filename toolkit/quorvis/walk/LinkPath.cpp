#include "toolkit/quorvis/walk/LinkPath.h"

#include <string_view>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

namespace {

constexpr int kMostLinks = 40;  // as the kernel has it

}  // namespace

bool linkLeadsInto(const Root& root, const std::string& path,
                   const std::function<bool(const std::string& place)>& isThere) {
    std::string place;
    std::string todo = path;
    for (int links = 0; !todo.empty() && links <= kMostLinks;) {
        std::string_view rest = todo;
        const std::string name(takeField(rest, '/'));
        todo = std::string(rest);
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            place.erase(place.empty() ? 0 : place.rfind('/'));
            continue;
        }
        std::string next = place;
        next.append("/").append(name);
        if (isThere(next)) return true;
        std::string link = root.readLink(next);
        if (link.empty()) {
            place = std::move(next);
            continue;
        }
        ++links;
        if (link.front() == '/') place.clear();
        todo = link.append("/").append(todo);
    }
    return false;
}

}  // namespace toolkit::quorvis
