#include "bench/MachineTree.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/MadeFiles.h"
#include "bench/Words.h"
#include "tests/toolkit/quorvis/ShippedTrees.h"

namespace zavbench {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kMaxCopied = std::uintmax_t{256} << 20;
constexpr std::uintmax_t kMaxCopiedFile = std::uintmax_t{16} << 20;

constexpr std::array<const char*, 4> kUsers = {"anna", "build", "jonas", "mei"};
constexpr std::array<const char*, 6> kEndings = {"js", "ts", "map", "md", "json", "css"};
constexpr std::array<const char*, 12> kLanguages = {"ar", "cs", "de",    "es",    "fr", "it",
                                                    "ja", "pl", "pt_BR", "zh_CN", "ru", "uk"};

// Creates files and counts them.
class TreeMaker {
  public:
    TreeMaker(fs::path root, int files) : root_(std::move(root)), left_(files) {}

    int left() const { return left_; }
    std::uint32_t below(std::uint32_t limit) { return numbers_.below(limit); }
    std::string word() { return words(numbers_, 1, ""); }
    std::string text(std::uint32_t count) { return words(numbers_, count, " "); }
    std::string name(int number) { return fmt::format("{}-{}{}", word(), word(), number); }
    Numbers& numbers() { return numbers_; }
    const fs::path& root() const { return root_; }

    // Creates a directory with those above it.
    void directory(const std::string& path) {
        if (known_.insert(path).second) fs::create_directories(root_ / path.substr(1));
    }
    // In a directory that exists.
    void file(const std::string& path, std::string_view content = {}) {
        const int made =
            ::open((root_.string() + path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        const auto size = static_cast<ssize_t>(content.size());
        const bool good = made >= 0 && (size == 0 || ::write(made, content.data(), content.size()) == size);
        if (made >= 0) ::close(made);
        if (!good) throw std::runtime_error("cannot write " + path);
        --left_;
    }
    void link(const std::string& target, const std::string& path) {
        if (::symlink(target.c_str(), (root_.string() + path).c_str()) == 0) --left_;
    }
    void count(int files) { left_ -= files; }

  private:
    fs::path root_;
    int left_;
    Numbers numbers_;
    std::set<std::string> known_;
};

// Programs and libraries, without the directories below.
void copySystem(TreeMaker& tree) {
    std::uintmax_t copied = 0;
    for (const std::string directory : {"/usr/bin", "/usr/sbin", "/usr/lib/x86_64-linux-gnu"}) {
        tree.directory(directory);
        std::vector<fs::directory_entry> entries;
        for (const auto& entry : fs::directory_iterator(directory)) entries.push_back(entry);
        std::ranges::sort(entries);
        for (const fs::directory_entry& entry : entries) {
            const fs::path to = tree.root() / entry.path().relative_path();
            std::error_code error;
            if (entry.is_symlink()) {
                fs::copy_symlink(entry.path(), to, error);
            } else {
                const std::uintmax_t size = entry.is_regular_file() ? entry.file_size(error) : kMaxCopied;
                if (error || size > kMaxCopiedFile || copied + size > kMaxCopied) continue;
                fs::copy_file(entry.path(), to, error);
                copied += size;
            }
            if (!error) tree.count(1);
        }
    }
    tree.link("usr/bin", "/bin");
    tree.link("usr/sbin", "/sbin");
}

void copyPackageDatabase(TreeMaker& tree) {
    tree.directory("/var/lib/dpkg/info");
    tree.directory("/etc");
    fs::copy_file("/etc/os-release", tree.root() / "etc/os-release");
    fs::copy_file("/var/lib/dpkg/status", tree.root() / "var/lib/dpkg/status");
    tree.count(2);
    for (const auto& entry : fs::directory_iterator("/var/lib/dpkg/info")) {
        fs::copy_file(entry.path(), tree.root() / entry.path().relative_path());
        tree.count(1);
    }
}

// The products of the tests of the catalogue, as far as they are files and not in each other's place.
void plantProducts(TreeMaker& tree) {
    const auto isFree = [&](const quorvistest::ShippedTree::Thing& thing) {
        static const std::set<std::string> kFiles = {"file", "elf", "jar", "maven", "go", "crates", "pe"};
        return kFiles.contains(thing.kind) && !fs::exists(tree.root() / thing.words.at(0).substr(1));
    };
    std::vector<fs::path> sources;
    for (const auto& entry : fs::directory_iterator(ZAV_CATALOGUE_TREES)) sources.push_back(entry.path());
    std::ranges::sort(sources);
    for (const fs::path& source : sources) {
        for (const quorvistest::ShippedSignature& signature : quorvistest::readShippedTrees(source)) {
            for (const quorvistest::ShippedTree& planted : signature.trees) {
                if (planted.found.empty() || !std::ranges::all_of(planted.things, isFree)) continue;
                quorvistest::plantTree(planted, tree.root());
                tree.count(static_cast<int>(planted.things.size()));
            }
        }
    }
}

void makeNodePackage(TreeMaker& tree, const std::string& modules, int number) {
    const bool scoped = number % 7 == 0;
    const std::string own = tree.name(number);
    const std::string name = scoped ? "@" + tree.word() + "/" + own : own;
    const std::string version = fmt::format("{}.{}.{}", number % 9, number % 23, number % 7);
    const std::string directory = modules + "/" + name;
    tree.directory(directory);
    tree.file(directory + "/package.json", packageJson(tree.numbers(), name, version));
    for (const char* const plain : {"/README.md", "/LICENSE", "/index.js"}) tree.file(directory + plain);
    const std::uint32_t more = tree.below(30);
    for (const char* const part : {"/lib", "/dist", "/dist/esm"}) {
        if (more < 6) break;
        tree.directory(directory + part);
        for (std::uint32_t i = 0; i < more / 3 + 1; ++i)
            tree.file(fmt::format("{}{}/{}.{}", directory, part, tree.name(static_cast<int>(i)),
                                  kEndings.at(tree.below(kEndings.size()))));
    }
    if (number % 5 != 0) return;
    tree.directory(directory + "/bin");
    tree.file(directory + "/bin/" + own + ".js", "#!/usr/bin/env node\n" + tree.text(60) + "\n");
    tree.directory(modules + "/.bin");
    tree.link("../" + name + "/bin/" + own + ".js", modules + "/.bin/" + own);
}

void makeNodeProject(TreeMaker& tree, const std::string& project, int files) {
    const int end = std::max(0, tree.left() - files);
    std::string modules = project + "/node_modules";
    std::string parent;
    for (int i = 0; tree.left() > end; ++i) {
        // Some packages bring others of their own.
        makeNodePackage(tree, i % 20 == 19 ? parent + "/node_modules" : modules, i);
        if (i % 20 == 18) {
            parent = modules + "/" + tree.name(i);
            tree.directory(parent);
        }
    }
}

void makePythonPackage(TreeMaker& tree, const std::string& site, int number) {
    const std::string name = fmt::format("{}_{}", tree.word(), number);
    const std::string version = fmt::format("{}.{}", number % 5, number % 31);
    const std::string info = fmt::format("{}/{}-{}.dist-info", site, name, version);
    tree.directory(info);
    tree.file(info + "/METADATA", pythonMetadata(tree.numbers(), name, version));
    for (const char* const plain : {"/RECORD", "/WHEEL", "/INSTALLER", "/LICENSE", "/top_level.txt"})
        tree.file(info + plain);
    const std::uint32_t modules = 5 + tree.below(60);
    for (const std::string& part : {std::string(), "/" + tree.word()}) {
        const std::string directory = site + "/" + name + part;
        tree.directory(directory + "/__pycache__");
        for (std::uint32_t i = 0; i < modules / 2 + 1; ++i) {
            const std::string module = tree.name(static_cast<int>(i));
            tree.file(directory + "/" + module + ".py");
            tree.file(directory + "/__pycache__/" + module + ".cpython-311.pyc");
        }
    }
}

void makePythonSite(TreeMaker& tree, const std::string& site, int files) {
    const int end = std::max(0, tree.left() - files);
    for (int i = 0; tree.left() > end; ++i) makePythonPackage(tree, site, i);
}

void makeArchives(TreeMaker& tree, const std::string& directory, int count) {
    tree.directory(directory);
    for (int i = 0; i < count; ++i) {
        const std::string version = fmt::format("{}.{}.{}", i % 4 + 1, i % 11, i % 5);
        const std::string name = tree.name(i);
        makeJar(tree.root() / fmt::format("{}/{}-{}.jar", directory, name, version).substr(1), tree.numbers(),
                name, version);
        tree.count(1);
    }
}

void makeMavenRepository(TreeMaker& tree, const std::string& home, int artifacts) {
    for (int i = 0; i < artifacts; ++i) {
        const std::string name = tree.name(i);
        const std::string version = fmt::format("{}.{}", i % 6, i % 14);
        const std::string place =
            fmt::format("{}/.m2/repository/org/{}/{}/{}", home, tree.word(), name, version);
        const std::string file = fmt::format("{}/{}-{}", place, name, version);
        tree.directory(place);
        makeJar(tree.root() / (file + ".jar").substr(1), tree.numbers(), name, version);
        tree.count(1);
        for (const char* const ending : {".jar.sha1", ".pom", ".pom.sha1"}) tree.file(file + ending);
        tree.file(place + "/_remote.repositories");
    }
}

void makeGems(TreeMaker& tree, const std::string& directory, int count) {
    tree.directory(directory + "/specifications");
    for (int i = 0; i < count; ++i) {
        const std::string name = fmt::format("{}_{}", tree.word(), i);
        const std::string version = fmt::format("{}.{}.0", i % 5, i % 13);
        tree.file(fmt::format("{}/specifications/{}-{}.gemspec", directory, name, version),
                  gemSpecification(tree.numbers(), name, version));
        const std::string gem = fmt::format("{}/gems/{}-{}/lib/{}", directory, name, version, name);
        tree.directory(gem);
        for (std::uint32_t j = 0; j < 10 + tree.below(80); ++j)
            tree.file(fmt::format("{}/{}.rb", gem, tree.name(static_cast<int>(j))));
    }
}

// Directories with two hexadecimal digits as a name, such as git and many caches have.
void makeHashedFiles(TreeMaker& tree, const std::string& directory, int files, int digits) {
    for (int i = 0; i < files; ++i) {
        const std::string hash = identifier(i).substr(0, 8) + identifier(files + i).substr(0, 8);
        tree.directory(directory + "/" + hash.substr(0, 2));
        tree.file(fmt::format("{}/{}/{}", directory, hash.substr(0, 2),
                              hash.substr(2, static_cast<std::size_t>(digits))));
    }
}

void makeSources(TreeMaker& tree, const std::string& project, int files) {
    for (int i = 0; i < files; ++i) {
        const std::string directory =
            fmt::format("{}/{}/{}{}", project, kLanguages.at(tree.below(3)), tree.word(), i / 60);
        tree.directory(directory);
        tree.file(fmt::format("{}/{}.{}", directory, tree.name(i), i % 3 == 0 ? "h" : "cpp"));
    }
    makeHashedFiles(tree, project + "/.git/objects", files, 14);
}

void makeShared(TreeMaker& tree, int packages) {
    for (int i = 0; i < packages; ++i) {
        const std::string name = tree.name(i);
        tree.directory("/usr/share/doc/" + name);
        for (const char* const plain : {"copyright", "changelog.gz", "changelog.Debian.gz"})
            tree.file("/usr/share/doc/" + name + "/" + plain);
        tree.directory("/usr/share/man/man1");
        tree.file("/usr/share/man/man1/" + name + ".1.gz");
        tree.directory("/usr/share/" + name + "/data");
        for (std::uint32_t j = 0; j < tree.below(14); ++j)
            tree.file(fmt::format("/usr/share/{}/data/{}.xml", name, tree.name(static_cast<int>(j))));
        for (const char* const language : kLanguages) {
            if (i % 3 != 0) break;
            const std::string messages = fmt::format("/usr/share/locale/{}/LC_MESSAGES", language);
            tree.directory(messages);
            tree.file(messages + "/" + name + ".mo");
        }
        for (const char* const size : {"16x16", "32x32", "48x48", "256x256"}) {
            const std::string icons = fmt::format("/usr/share/icons/hicolor/{}/apps", size);
            tree.directory(icons);
            tree.file(icons + "/" + name + ".png");
        }
    }
}

void makeKernelModules(TreeMaker& tree, const std::string& version, int modules) {
    for (int i = 0; i < modules; ++i) {
        const std::string directory = fmt::format("/usr/lib/modules/{}/kernel/drivers/{}/{}{}", version,
                                                  kEndings.at(tree.below(4)), tree.word(), i / 12);
        tree.directory(directory);
        tree.file(fmt::format("{}/{}.ko.xz", directory, tree.name(i)));
    }
}

// Whatever users sent to a web application, by month.
void makeUploads(TreeMaker& tree, int files) {
    for (int i = 0; i < files; ++i) {
        const std::string directory =
            fmt::format("/srv/www/uploads/{}/{:02}", 2015 + i / 6000, i / 500 % 12 + 1);
        tree.directory(directory);
        tree.file(fmt::format("{}/{}-{}.jpg", directory, tree.word(), i));
    }
}

}  // namespace

void makeMachineTree(const fs::path& root, int files) {
    fs::create_directories(root);
    TreeMaker tree(root, files);
    copyPackageDatabase(tree);
    copySystem(tree);
    plantProducts(tree);
    for (int i = 0; i < 4; ++i) makeNodeProject(tree, fmt::format("/srv/app{}", i), files * 5 / 100);
    for (const char* const user : kUsers) {
        const std::string home = fmt::format("/home/{}", user);
        makeNodeProject(tree, home + "/src/web", files * 2 / 100);
        makePythonSite(tree, home + "/venv/lib/python3.11/site-packages", files * 2 / 100);
        makeSources(tree, home + "/src/tool", files / 100);
        makeMavenRepository(tree, home, files / 2'000);
        makeHashedFiles(tree, home + "/.cache/browser/entries", files * 3 / 100, 12);
    }
    makePythonSite(tree, "/usr/lib/python3/dist-packages", files * 3 / 100);
    makePythonSite(tree, "/opt/analysis/lib/python3.11/site-packages", files * 4 / 100);
    for (int i = 0; i < 5; ++i) makeArchives(tree, fmt::format("/opt/service{}/lib", i), files / 5'000);
    makeGems(tree, "/var/lib/gems/3.1.0", files / 5'000);
    makeKernelModules(tree, "6.1.0-18-amd64", files / 125);
    makeShared(tree, files / 400);
    makeUploads(tree, std::max(0, tree.left()));
}

}  // namespace zavbench
