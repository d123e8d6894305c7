#include "toolkit/machine/packages/PackageFiles.h"

#include <algorithm>
#include <array>
#include <span>
#include <unordered_map>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/files/ParagraphReader.h"
#include "toolkit/machine/packages/ApkDatabase.h"
#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/packages/RpmDatabase.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

std::string fileIn(const std::string& directory, const std::string& name) {
    std::string path = directory;
    return path.append("/").append(name);
}

using Damage = PackageReading::Damage;

// Reads the lists of many packages, one file each.
class ListFiles {
  public:
    ListFiles(const Root& root, Budget& budget, PackageReading& reading)
        : root_(root), budget_(budget), reading_(reading) {}

    // The whole lines of a file, valid until the next call. Empty when there is no such file.
    std::string_view read(const std::string& path) {
        constexpr std::size_t kMaxSize = std::size_t{16} << 20;
        InputFile file(root_, path);
        if (file.state() == InputFile::State::Unreadable) reading_.note(Damage::Unreadable, path);
        if (file.state() != InputFile::State::Open || budget_.isSpent()) return {};
        const std::size_t size = std::min<std::uint64_t>(file.size(), kMaxSize);
        if (buffer_.size() < size) buffer_.resize(size);
        const std::size_t count = file.readAt(0, std::span(buffer_).first(size));
        if (!budget_.read(count)) return {};
        std::string_view text(buffer_.data(), count);
        const std::size_t end = text.rfind('\n') + 1;
        if (file.size() > kMaxSize || count < file.size() || file.failed() || end != count)
            reading_.note(Damage::Broken, path, end);
        return text.substr(0, end);
    }

  private:
    const Root& root_;
    Budget& budget_;
    PackageReading& reading_;
    std::string buffer_;
};

void visitPath(std::string_view path, PackageFileVisitor& visitor) {
    const std::size_t slash = path.rfind('/');
    visitor.onFile(path.substr(0, slash), path.substr(slash + 1));
}

// Reads the lists of dpkg: a file NAME.list or NAME:ARCHITECTURE.list per package, with a path per line. A directory
// precedes what is in it.
class DpkgLists {
  public:
    DpkgLists(const Root& root, Budget& budget, PackageFileVisitor& visitor)
        : root_(root), budget_(budget), visitor_(visitor), files_(root, budget, reading_) {}

    PackageReading visit(const std::string& folder) {
        readDiversions(folder + "/diversions");
        const std::string lists = folder + "/info";
        for (const std::string& name : root_.list(lists)) {
            if (budget_.isSpent()) break;
            if (name.ends_with(kList)) readList(fileIn(lists, name), packageOf(name, kList));
        }
        const std::string sums = folder + "/status.d";
        for (const std::string& name : root_.list(sums)) {
            if (budget_.isSpent()) break;
            if (name.ends_with(kSums)) readSums(fileIn(sums, name), packageOf(name, kSums));
        }
        return reading_;
    }

  private:
    static constexpr std::string_view kList = ".list";
    static constexpr std::string_view kSums = ".md5sums";

    struct Diversion {
        std::string to;
        std::string by;  // the package whose own file stays in its place; ":" for none
    };

    static std::string_view packageOf(std::string_view file, std::string_view suffix) {
        file.remove_suffix(suffix.size());
        return file;
    }

    // Three lines each: the path, the path that it is diverted to, and the package.
    void readDiversions(const std::string& path) {
        std::string_view text = files_.read(path);
        std::string_view from;
        std::string_view to;
        std::string_view by;
        while (nextLine(text, from) && nextLine(text, to) && nextLine(text, by) && budget_.item())
            diversions_[std::string(from)] = {std::string(to), std::string(by)};
    }

    bool begin(std::string_view package) {
        std::string_view name = takeField(package, ':');
        name_ = name;
        return visitor_.onPackage(name, {}, package);
    }

    void readList(const std::string& path, std::string_view package) {
        if (!begin(package)) return;
        std::string_view text = files_.read(path);
        std::string_view line;
        while (nextLine(text, line)) {
            if (!budget_.item()) return;
            const std::string_view next = text.substr(0, line.size() + 1);
            const bool directory = next.starts_with(line) && next.ends_with('/');
            if (line.size() < 2 || line.front() != '/' || line == "/." || directory) continue;
            visitDiverted(line);
        }
    }

    void visitDiverted(std::string_view path) {
        if (!diversions_.empty()) {
            const auto found = diversions_.find(std::string(path));
            if (found != diversions_.end() && found->second.by != name_)
                return visitPath(found->second.to, visitor_);
        }
        visitPath(path, visitor_);
    }

    // Images that were built without dpkg have checksums only: "0123abcd  usr/bin/x".
    void readSums(const std::string& path, std::string_view package) {
        if (!begin(package)) return;
        std::string_view text = files_.read(path);
        std::string_view line;
        while (nextLine(text, line)) {
            if (!budget_.item()) return;
            const std::size_t blank = line.find("  ");
            if (blank == std::string_view::npos) continue;
            std::string file = "/";
            visitPath(file.append(line.substr(blank + 2)), visitor_);
        }
    }

    const Root& root_;
    Budget& budget_;
    PackageFileVisitor& visitor_;
    PackageReading reading_;
    ListFiles files_;
    std::unordered_map<std::string, Diversion> diversions_;
    std::string_view name_;  // of the current package
};

PackageReading visitDpkg(const Root& root, const std::string& database, Budget& budget,
                         PackageFileVisitor& visitor) {
    const std::size_t slash = database.rfind('/');
    const std::string folder = database.empty() ? "/var/lib/dpkg" : database.substr(0, slash);
    return DpkgLists(root, budget, visitor).visit(folder);
}

// One paragraph per package. "F:" is the directory of the "R:" lines that follow.
class ApkFiles {
  public:
    explicit ApkFiles(PackageFileVisitor& visitor) : visitor_(visitor) {}

    // False when the budget is spent.
    bool visit(std::string_view text, Budget& budget) {
        std::string_view line;
        while (nextLine(text, line)) {
            if (line.empty()) package_ = {};
            if (line.size() < 2 || line[1] != ':') continue;
            if (!budget.item()) return false;
            visitField(line.front(), line.substr(2));
        }
        package_ = {};
        return true;
    }

  private:
    struct Package {
        std::string_view name;
        std::string_view version;
        std::string_view architecture;
        bool begun = false;
        bool wanted = false;
    };

    void visitField(char letter, std::string_view value) {
        if (letter == 'P') package_.name = value;
        if (letter == 'V') package_.version = value;
        if (letter == 'A') package_.architecture = value;
        if (letter == 'F') directory_ = value.empty() ? std::string() : std::string("/").append(value);
        if (letter != 'R') return;
        if (!package_.begun) {
            package_.begun = true;
            package_.wanted = visitor_.onPackage(package_.name, package_.version, package_.architecture);
        }
        if (package_.wanted) visitor_.onFile(directory_, value);
    }

    PackageFileVisitor& visitor_;
    Package package_;
    std::string directory_;
};

PackageReading visitApk(const Root& root, const std::string& database, Budget& budget,
                        PackageFileVisitor& visitor) {
    PackageReading reading;
    for (const std::string& path : apkDatabases(root, database)) {
        ParagraphReader file(root, path, budget);
        if (file.state() == InputFile::State::Unreadable) reading.note(Damage::Unreadable, path);
        ApkFiles files(visitor);
        for (std::string_view text = file.next(); !text.empty(); text = file.next()) {
            if (!files.visit(text, budget)) break;
        }
        if (!file.whole()) reading.note(Damage::Broken, path, file.damagedAt());
    }
    return reading;
}

// A file NAME-VERSION-RELEASE/files per package. Below %FILES% stand paths without the first slash; those of directories
// end in one.
PackageReading visitPacman(const Root& root, const std::string& database, Budget& budget,
                           PackageFileVisitor& visitor) {
    const std::string folder = folderOf(database, "/var/lib/pacman/local/");
    PackageReading reading;
    ListFiles files(root, budget, reading);
    for (const std::string& package : root.list(folder)) {
        const std::size_t release = package.rfind('-');
        const std::size_t version = release == 0 ? std::string::npos : package.rfind('-', release - 1);
        if (release == std::string::npos || version == std::string::npos) continue;
        if (budget.isSpent()) break;
        if (!visitor.onPackage(package.substr(0, version), package.substr(version + 1), {})) continue;
        std::string_view text = files.read(folder + package + "/files");
        std::string_view line;
        bool listed = false;
        while (nextLine(text, line) && budget.item()) {
            if (line.empty() || line.front() == '%') listed = line == "%FILES%";
            if (!listed || line.empty() || line.front() == '%' || line.ends_with('/')) continue;
            visitPath(std::string("/").append(line), visitor);
        }
    }
    return reading;
}

PackageReading visitRpm(const Root& root, const std::string& database, Budget& budget,
                        PackageFileVisitor& visitor) {
    return visitRpmHeaders(root, database, budget, [&](std::string_view header, const std::string&) {
        RpmPackage package;
        if (!readRpmHeader(header, package)) return false;
        const std::string epoch = package.hasEpoch ? std::to_string(package.epoch) + ":" : std::string();
        const std::string version =
            std::string(epoch).append(package.version).append("-").append(package.release);
        if (!visitor.onPackage(package.name, version, package.architecture)) return true;
        return readRpmFiles(header, [&](std::string_view directory, std::string_view name) {
            if (budget.item()) visitor.onFile(directory, name);
        });
    });
}

}  // namespace

PackageReading visitPackageFiles(PackageType type, const Root& root, const std::string& database,
                                 Budget& budget, PackageFileVisitor& visitor) {
    PackageReading reading;
    if (type == PackageType::Dpkg) reading = visitDpkg(root, database, budget, visitor);
    if (type == PackageType::Rpm) reading = visitRpm(root, database, budget, visitor);
    if (type == PackageType::Apk) reading = visitApk(root, database, budget, visitor);
    if (type == PackageType::Pacman) reading = visitPacman(root, database, budget, visitor);
    if (budget.isSpent()) {
        const bool late = budget.spent() == Budget::Spent::Time;
        reading.damage = late ? Damage::OutOfTime : Damage::TooLarge;
    }
    return reading;
}

std::string directoryOfPackage(PackageType type, std::string_view database, std::string_view release) {
    const std::size_t current = database.find("/current/");
    if (current == std::string_view::npos) return {};
    std::string directory(database.substr(0, current));
    if (type == PackageType::Flatpak) return directory;
    if (type != PackageType::Snap) return {};
    return directory.append("/").append(release.empty() ? std::string_view("current") : release);
}

}  // namespace toolkit
