#include "toolkit/machine/files/MountInfo.h"

#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

bool isOctal(char c) {
    return c >= '0' && c <= '7';
}

// "rw,relatime" of the mount and "ro,discard" of its file system make "ro,relatime,discard": either can
// forbid writing.
std::string mergedOptions(std::string_view ofMount, std::string_view ofFileSystem) {
    std::string merged(ofMount);
    if (merged.substr(0, 2) == "rw" && hasMountOption(ofFileSystem, "ro")) merged.replace(0, 2, "ro");
    while (!ofFileSystem.empty()) {
        const std::string_view option = takeField(ofFileSystem, ',');
        if (option.empty() || option == "rw" || option == "ro" || hasMountOption(ofMount, option)) continue;
        if (!merged.empty()) merged += ',';
        merged += option;
    }
    return merged;
}

// 36 35 98:0 /mnt1 /mnt2 rw,noatime shared:1 master:2 - ext3 /dev/root rw,errors=continue
// Fields are separated by exactly one blank. The source of a file system that was mounted without one is empty.
bool readMountInfoLine(std::string_view line, Mount& mount) {
    takeField(line, ' ');  // the mount's id
    takeField(line, ' ');  // its parent's
    mount.device = takeField(line, ' ');
    mount.root = withoutOctalEscapes(takeField(line, ' '));
    mount.mountPoint = withoutOctalEscapes(takeField(line, ' '));
    const std::string_view options = takeField(line, ' ');
    while (!line.empty() && takeField(line, ' ') != "-") continue;
    mount.type = withoutOctalEscapes(takeField(line, ' '));
    mount.source = withoutOctalEscapes(takeField(line, ' '));
    mount.options = withoutOctalEscapes(mergedOptions(options, line));
    return !mount.mountPoint.empty() && !mount.type.empty();
}

// /dev/sda1 /mnt\040point ext4 rw,relatime 0 1
bool readMountTableLine(std::string_view line, Mount& mount) {
    mount.source = withoutOctalEscapes(nextWord(line));
    if (mount.source.empty() || mount.source.front() == '#') return false;
    mount.mountPoint = withoutOctalEscapes(nextWord(line));
    mount.type = withoutOctalEscapes(nextWord(line));
    mount.options = withoutOctalEscapes(nextWord(line));
    if (mount.mountPoint.empty() || mount.mountPoint.front() != '/' || mount.type.empty()) return false;
    return mount.type != "swap" && !hasMountOption(mount.options, "noauto");
}

}  // namespace

bool hasMountOption(std::string_view options, std::string_view wanted) {
    while (!options.empty()) {
        if (takeField(options, ',') == wanted) return true;
    }
    return false;
}

std::string withoutOctalEscapes(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '\\' && i + 3 < text.size() && text[i + 1] >= '0' &&
                            text[i + 1] <= '3' && isOctal(text[i + 2]) && isOctal(text[i + 3]);
        if (!escape) {
            plain += text[i];
            continue;
        }
        plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
        i += 3;
    }
    return plain;
}

std::vector<Mount> readMountInfo(std::string_view text) {
    return parseLines(text, readMountInfoLine);
}

std::vector<Mount> readMountTable(std::string_view text) {
    return parseLines(text, readMountTableLine);
}

}  // namespace toolkit
