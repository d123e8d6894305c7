#include "toolkit/machine/packages/SnapDatabase.h"

#include <vector>

#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

// The text of a quoted scalar without its quotes. In single quotes, '' is an escaped quote. In double quotes, a backslash escapes
// the next character, which is right for \" and \\.
std::string unquoted(std::string_view scalar) {
    const char quote = scalar.front();
    std::string text;
    for (std::size_t i = 1; i < scalar.size(); ++i) {
        const bool escape = quote == '"' ? scalar[i] == '\\' : scalar.substr(i, 2) == "''";
        if (escape && i + 1 < scalar.size()) {
            text += scalar[++i];
        } else if (scalar[i] == quote) {
            break;
        } else {
            text += scalar[i];
        }
    }
    return text;
}

std::string scalarOf(std::string_view value) {
    if (value.empty() || value.front() == '#') return {};
    if (value.front() == '"' || value.front() == '\'') return unquoted(value);
    return std::string(trimmed(value.substr(0, value.find(" #"))));
}

void appendItem(std::string& list, std::string_view value) {
    const std::string item = scalarOf(trimmed(value));
    if (item.empty()) return;
    if (!list.empty()) list += ';';
    list += item;
}

// "[amd64, i386]"
void appendFlowList(std::string& list, std::string_view value) {
    value.remove_prefix(1);
    value = value.substr(0, value.find(']'));
    while (!value.empty()) appendItem(list, takeField(value, ','));
}

std::string* valueOf(std::string_view key, SnapMeta& meta) {
    if (key == "name") return &meta.name;
    if (key == "version") return &meta.version;
    if (key == "summary") return &meta.summary;
    if (key == "architectures") return &meta.architectures;
    return nullptr;
}

void storeValue(std::string& target, std::string_view value) {
    if (value.empty() || value.front() == '|' || value.front() == '>')
        return;  // the value is in the following lines
    if (value.front() == '[') {
        appendFlowList(target, value);
    } else if (target.empty()) {
        target = scalarOf(value);
    }
}

// Stores a line that continues the value of a key: an item of a list, or the first line of a block.
void storeContinuation(std::string& target, bool list, std::string_view line) {
    line = trimmed(line);
    if (list && line.substr(0, 2) == "- ") {
        appendItem(target, line.substr(2));
    } else if (!list && target.empty()) {
        target = line;
    }
}

}  // namespace

SnapMeta readSnapMeta(std::string_view text) {
    SnapMeta meta;
    std::string* target = nullptr;
    std::string_view line;
    while (nextLine(text, line)) {
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == ' ' || line.front() == '\t' || line.front() == '-') {
            if (target != nullptr) storeContinuation(*target, target == &meta.architectures, line);
            continue;
        }
        const std::size_t colon = line.find(':');
        target = valueOf(line.substr(0, colon), meta);
        if (target != nullptr && colon != std::string_view::npos)
            storeValue(*target, trimmed(line.substr(colon + 1)));
    }
    return meta;
}

namespace {

using Damage = PackageReading::Damage;

InstalledPackage packageOf(const SnapMeta& snap, const std::string& revision, const std::string& database,
                           PackageTexts& texts) {
    InstalledPackage package;
    package.type = PackageType::Snap;
    package.name = keepValue(snap.name, texts);
    package.version = keepValue(snap.version, texts);
    package.upstream = package.version;
    package.release = keepValue(revision, texts);
    package.architecture = keepValue(snap.architectures, texts);
    package.description = keepValue(snap.summary, texts);
    package.database = texts.keep(database);
    return package;
}

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    std::vector<std::string> folders{"/snap/", "/var/lib/snapd/snap/"};
    if (!database.empty()) folders = {folderOf(database, "")};
    PackageReading result;
    for (const std::string& folder : folders) {
        const std::vector<std::string> names = root.list(folder);
        for (const std::string& name : names) {
            if (!texts.budget().item()) {
                result.note(Damage::TooLarge, folder);
                break;
            }
            const std::string current = folder + name + "/current";
            const std::string path = current + "/meta/snap.yaml";
            const SnapMeta snap = readSnapMeta(readSmallFile(root, path, texts, result));
            if (snap.name.empty()) continue;
            const InstalledPackage package = packageOf(snap, root.linkName(current), path, texts);
            if (!texts.budget().isSpent()) visit(package);
        }
        if (!names.empty()) break;  // if both folders exist, one is a link to the other
    }
    return result;
}

}  // namespace

constinit const PackageDatabase kSnapDatabase{PackageType::Snap, "snap", "snap", false, visitPackages};

}  // namespace toolkit
