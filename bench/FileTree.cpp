#include "bench/FileTree.h"

#include <fmt/format.h>

#include <array>
#include <fstream>
#include <vector>

#include "bench/Words.h"

namespace zavbench {

namespace {

using std::filesystem::path;

constexpr std::array<const char*, 4> kTops = {"usr", "opt", "srv", "home"};
constexpr std::array<const char*, 8> kEndings = {"txt", "so", "conf", "json", "py", "html", "png", "xml"};
constexpr int kFilesPerDirectory = 10;
constexpr std::size_t kDirectoriesPerDirectory = 6;
constexpr int kFilesPerProduct = 3;

void write(const path& file, const std::string& text) {
    std::ofstream(file) << text;
}

// Directories of four to eight levels, each parent before its children.
std::vector<path> makeDirectories(const path& root, std::size_t count, Numbers& numbers) {
    std::vector<path> all;
    for (const char* top : kTops) all.push_back(root / top);
    while (all.size() < count) {
        const path& parent = all[(all.size() - kTops.size()) / kDirectoriesPerDirectory];
        all.push_back(parent / fmt::format("{}{}", words(numbers, 1, ""), all.size()));
    }
    for (const path& directory : all) std::filesystem::create_directory(directory);
    return all;
}

void makeProduct(const path& parent, int number) {
    const path directory = parent / fmt::format("product{}", number);
    std::filesystem::create_directory(directory);
    write(directory / "release", fmt::format("NAME=\"Product {}\"\nVERSION=\"2.{}.1\"\n", number, number));
    write(directory / fmt::format("libproduct{}.so.1", number), "library");
    write(directory / fmt::format("product{}.conf", number), fmt::format("port = {}\n", 1024 + number));
}

void copyPackageDatabase(const path& root) {
    const path database = "var/lib/dpkg";
    std::filesystem::create_directories(root / database);
    std::filesystem::copy_file("/" / database / "status", root / database / "status");
}

}  // namespace

void makeFileTree(const FileTree& tree) {
    std::filesystem::create_directories(tree.root);
    copyPackageDatabase(tree.root);
    Numbers numbers;
    const int ordinary = tree.files - kFilesPerProduct * tree.products - 1;
    const std::vector<path> directories =
        makeDirectories(tree.root, static_cast<std::size_t>(ordinary / kFilesPerDirectory), numbers);
    for (int i = 0; i < ordinary; ++i) {
        const path& directory = directories[static_cast<std::size_t>(i) % directories.size()];
        write(directory / fmt::format("{}{}.{}", words(numbers, 2, "-"), i,
                                      kEndings.at(numbers.below(kEndings.size()))),
              "");
    }
    for (int i = 0; i < tree.products; ++i) {
        makeProduct(directories[numbers.below(static_cast<std::uint32_t>(directories.size()))], i);
    }
}

}  // namespace zavbench
