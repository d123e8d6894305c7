#include "tests/toolkit/quorvis/ShippedTrees.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/support/Program.h"
#include "tests/toolkit/quorvis/BinaryFiles.h"

namespace quorvistest {

namespace {

namespace fs = std::filesystem;

std::string takeWord(std::string& line) {
    const std::size_t end = line.find(' ');
    std::string word = line.substr(0, end);
    line.erase(0, end == std::string::npos ? end : end + 1);
    return word;
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

class Reader {
  public:
    std::vector<ShippedSignature> read(const fs::path& file) {
        std::ifstream stream(file);
        if (!stream) throw std::runtime_error("no file " + file.string());
        for (std::string line; std::getline(stream, line);) {
            try {
                if (!line.empty() && line.front() != '#') take(line);
            } catch (const std::exception&) {
                throw std::runtime_error(file.string() + ": not understood: " + line);
            }
        }
        return std::move(signatures_);
    }

  private:
    void take(std::string line) {
        const std::string word = takeWord(line);
        if (word == "signature") {
            signatures_.push_back({line, {}});
        } else if (word == "tree") {
            signatures_.at(signatures_.size() - 1).trees.push_back({line, {}, {}, {}});
        } else if (word == "|") {
            tree().things.at(tree().things.size() - 1).lines += line + "\n";
        } else if (word == "found") {
            tree().found.push_back({line, {}});
        } else if (word == "=") {
            const std::string name = takeWord(line);
            tree().found.at(tree().found.size() - 1).variables.emplace_back(name, line);
        } else if (word == "event") {
            tree().events.push_back(line);
        } else {
            tree().things.push_back({word, wordsOf(line), {}});
        }
    }

    ShippedTree& tree() {
        std::vector<ShippedTree>& trees = signatures_.at(signatures_.size() - 1).trees;
        return trees.at(trees.size() - 1);
    }

    std::vector<ShippedSignature> signatures_;
};

class Planter {
  public:
    explicit Planter(fs::path directory) : directory_(std::move(directory)) {}

    void plant(const ShippedTree::Thing& thing) {
        const std::string& kind = thing.kind;
        if (kind == "file") {
            write(word(thing, 0), thing.lines);
        } else if (kind == "elf") {
            const std::string section = word(thing, 1).empty() ? ".rodata" : word(thing, 1);
            std::string texts = '\0' + thing.lines;
            std::ranges::replace(texts, '\n', '\0');
            write(word(thing, 0), elfFile(section, texts, word(thing, 2)));
        } else if (kind == "jar") {
            write(word(thing, 0), jarFile(thing.lines));
        } else if (kind == "maven") {
            write(word(thing, 0), mavenFile(word(thing, 1), word(thing, 2), word(thing, 3)));
        } else if (kind == "go") {
            std::string modules = thing.lines;
            std::ranges::replace(modules, ' ', '\t');
            write(word(thing, 0), goProgram(word(thing, 1), word(thing, 2), modules));
        } else if (kind == "within") {
            const std::string inner = mavenFile(word(thing, 2), word(thing, 3), word(thing, 4));
            write(word(thing, 0), archiveWith(word(thing, 1), inner));
        } else if (kind == "crates") {
            write(word(thing, 0), rustProgram(thing.lines));
        } else if (kind == "pe") {
            write(word(thing, 0), windowsProgram(word(thing, 1), word(thing, 2)));
        } else if (kind == "link") {
            fs::create_directories(pathOf(word(thing, 0)).parent_path());
            fs::create_symlink(word(thing, 1), pathOf(word(thing, 0)));
        } else if (kind != "running") {
            plantPackage(thing);
        }
    }

  private:
    static std::string word(const ShippedTree::Thing& thing, std::size_t index) {
        return index < thing.words.size() ? thing.words[index] : std::string();
    }

    fs::path pathOf(const std::string& path) const { return directory_ / path.substr(1); }

    void write(const std::string& path, const std::string& content) const {
        fs::create_directories(pathOf(path).parent_path());
        std::ofstream(pathOf(path), std::ios::binary | std::ios::app) << content;
    }

    // With the distribution that its package URL tells of.
    void plantPackage(const ShippedTree::Thing& thing) {
        const std::string& kind = thing.kind;
        const std::string name = word(thing, 0);
        const std::string version = word(thing, 1);
        const std::string source = word(thing, 2);
        if (kind == "dpkg" || kind == "removed") {
            const char* const status = kind == "dpkg" ? "install ok installed" : "deinstall ok config-files";
            std::string stanza = "Package: " + name + "\nStatus: " + status + "\nArchitecture: amd64\n";
            if (!source.empty()) stanza += "Source: " + source + "\n";
            write("/var/lib/dpkg/status", stanza + "Version: " + version + "\n\n");
            identify("debian");
        } else if (kind == "rpm") {
            plantRpm(rpmHeader(name, version, source, word(thing, 3)));
            identify("fedora");
        } else if (kind == "apk") {
            write("/lib/apk/db/installed", "P:" + name + "\nV:" + version +
                                               "\nA:x86_64\no:" + (source.empty() ? name : source) + "\n\n");
            identify("alpine");
        } else if (kind == "pacman") {
            write("/var/lib/pacman/local/" + name + "-" + version + "/desc",
                  "%NAME%\n" + name + "\n\n%VERSION%\n" + version + "\n\n%ARCH%\nx86_64\n\n");
            identify("arch");
        } else if (kind == "snap") {
            write("/snap/" + name + "/1/meta/snap.yaml", "name: " + name + "\nversion: '" + version + "'\n");
            fs::create_symlink("1", pathOf("/snap/" + name + "/current"));
        } else {
            throw std::runtime_error("no such kind of thing: " + kind);
        }
    }

    void plantRpm(const std::string& header) const {
        const fs::path database = pathOf("/usr/lib/sysimage/rpm/rpmdb.sqlite");
        fs::create_directories(database.parent_path());
        std::string digits;
        for (const char c : header) {
            char pair[3];
            std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
            digits += pair;
        }
        const std::string table = "create table if not exists Packages(hnum integer primary key, blob blob);";
        const zavtest::Finished run = zavtest::runProgram(
            "/usr/bin/sqlite3",
            {database.string(), table + "insert into Packages(blob) values (x'" + digits + "');"});
        if (run.status != 0) throw std::runtime_error(run.errors);
    }

    void identify(const std::string& distribution) const {
        if (!fs::exists(pathOf("/etc/os-release"))) write("/etc/os-release", "ID=" + distribution + "\n");
    }

    fs::path directory_;
};

}  // namespace

std::string ShippedTree::running() const {
    for (const Thing& thing : things) {
        if (thing.kind == "running") return thing.words.at(0);
    }
    return {};
}

std::vector<ShippedSignature> readShippedTrees(const fs::path& file) {
    return Reader().read(file);
}

void plantTree(const ShippedTree& tree, const fs::path& directory) {
    Planter planter(directory);
    for (const ShippedTree::Thing& thing : tree.things) planter.plant(thing);
}

}  // namespace quorvistest
