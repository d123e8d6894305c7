#include "toolkit/quorvah/sources/DeviceIdsFile.h"

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {
namespace {

bool beginsWith(std::string_view text, std::string_view head) {
    return text.substr(0, head.size()) == head;
}

// The lines before the first one that is indented by fewer than `depth` tabs. Comments and blank lines do not count.
std::string_view childrenIn(std::string_view text, std::size_t depth) {
    std::string_view rest = text;
    std::string_view line;
    std::size_t length = 0;
    while (nextLine(rest, line)) {
        if (!line.empty() && line.front() != '#' && line.find_first_not_of('\t') < depth) break;
        length = text.size() - rest.size();
    }
    return text.substr(0, length);
}

}  // namespace

// Searches for `head` after a line end instead of splitting the file into lines, which would be slower.
DeviceIdsFile::Entry DeviceIdsFile::findTop(std::string_view text, std::string_view head) {
    std::string_view rest;
    if (beginsWith(text, head)) {
        rest = text.substr(head.size());
    } else {
        const std::string wanted = "\n" + std::string(head);
        const std::size_t found = text.find(wanted);
        if (found == std::string_view::npos) return {};
        rest = text.substr(found + wanted.size());
    }
    std::string_view name;
    nextLine(rest, name);
    return {trimmed(name), childrenIn(rest, 1)};
}

DeviceIdsFile::Entry DeviceIdsFile::findChild(std::string_view children, std::size_t depth,
                                              std::string_view id) {
    const std::string head = std::string(depth, '\t') + std::string(id) + "  ";
    std::string_view line;
    while (nextLine(children, line)) {
        if (beginsWith(line, head))
            return {trimmed(line.substr(head.size())), childrenIn(children, depth + 1)};
    }
    return {};
}

const DeviceIdsFile::Entry& DeviceIdsFile::topEntry(std::string_view prefix, std::string_view id) {
    const std::string head = std::string(prefix) + std::string(id) + "  ";
    for (const KnownEntry& known : known_) {
        if (known.head == head) return known.entry;
    }
    known_.push_back({head, id.empty() ? Entry{} : findTop(text_, head)});
    return known_.back().entry;
}

std::string_view DeviceIdsFile::vendor(std::string_view vendor) {
    return topEntry("", vendor).name;
}

std::string_view DeviceIdsFile::device(std::string_view vendor, std::string_view device) {
    return findChild(topEntry("", vendor).children, 1, device).name;
}

std::string_view DeviceIdsFile::subsystem(std::string_view vendor, std::string_view device,
                                          std::string_view subsystemVendor, std::string_view subsystem) {
    const Entry entry = findChild(topEntry("", vendor).children, 1, device);
    return findChild(entry.children, 2, std::string(subsystemVendor) + " " + std::string(subsystem)).name;
}

std::string_view DeviceIdsFile::baseClass(std::string_view baseClass) {
    return topEntry("C ", baseClass).name;
}

std::string_view DeviceIdsFile::subclass(std::string_view baseClass, std::string_view subclass) {
    return findChild(topEntry("C ", baseClass).children, 1, subclass).name;
}

std::string_view DeviceIdsFile::version() const {
    std::string_view rest = text_;
    std::string_view line;
    while (nextLine(rest, line) && (line.empty() || line.front() == '#')) {
        std::string_view words = line.substr(line.empty() ? 0 : 1);
        if (nextWord(words) == "Version:") return trimmed(words);
    }
    return {};
}

}  // namespace toolkit::quorvah
