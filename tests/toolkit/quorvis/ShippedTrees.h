// What a file in tests/toolkit/quorvis/shipped says: for each signature the machines that have its software, and those
// that nearly have it. A line is a word and what belongs to it:
//     signature GUID              the trees that follow are for this signature
//     tree TEXT                   a machine; what is in it follows
//     dpkg NAME VERSION [SOURCE]  an installed package; likewise rpm, apk, pacman and snap
//     removed NAME VERSION        one of which only the configuration is left
//     file PATH                   a file, whose lines follow with "| " before each
//     elf PATH [SECTION [SONAME]] a program with these texts in its section, else in .rodata
//     jar PATH                    an archive with these lines as its manifest
//     pe PATH NAME VALUE          a Windows program with this text in its version resource
//     link PATH TARGET
//     running NAME                a program with this name runs on the machine itself, which is scanned instead
//     found TEXT                  what is found, by the name that is given to it
//     = NAME VALUE                a variable of it
//     event CODE                  what the user is told
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace quorvistest {

struct FoundSoftware {
    std::string name;
    std::vector<std::pair<std::string, std::string>> variables;

    bool operator==(const FoundSoftware&) const = default;
};

struct ShippedTree {
    struct Thing {
        std::string kind;
        std::vector<std::string> words;
        std::string lines;
    };
    std::string title;
    std::vector<Thing> things;
    std::vector<FoundSoftware> found;
    std::vector<std::string> events;

    // The name of the program that runs; empty for a tree of files.
    std::string running() const;
};

struct ShippedSignature {
    std::string guid;
    std::vector<ShippedTree> trees;
};

// Throws when the file cannot be understood.
std::vector<ShippedSignature> readShippedTrees(const std::filesystem::path& file);

// Makes the files of the tree below a directory.
void plantTree(const ShippedTree& tree, const std::filesystem::path& directory);

}  // namespace quorvistest
