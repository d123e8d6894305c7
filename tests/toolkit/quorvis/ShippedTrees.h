// The files in tests/toolkit/quorvis/shipped describe, for each signature, machines with its software and machines with
// similar software. A line consists of a keyword and its arguments:
//     signature GUID              the trees that follow are for this signature
//     tree TEXT                   a machine; its content follows
//     dpkg NAME VERSION [SOURCE]  an installed package; likewise rpm, apk, pacman and snap
//     rpm NAME VERSION SOURCE FILE   an installed package that owns the file
//     removed NAME VERSION        a removed package of which only the configuration is left
//     file PATH                   a file; its lines follow, each with the prefix "| "
//     elf PATH [SECTION [SONAME]] a program with these texts in its section (default .rodata)
//     jar PATH                    an archive with these lines as its manifest
//     maven PATH GROUP ARTIFACT VERSION   an archive with the properties that Maven adds
//     within PATH MEMBER GROUP ARTIFACT VERSION   an archive with such an archive as a member
//     go PATH MODULE VERSION      a program of Go that was built from this module; its lines, with blanks instead of tabs, are
//                                 further lines of its build information
//     crates PATH                 a program of Rust with these lines as its list of crates
//     pe PATH NAME VALUE          a Windows program with this text in its version resource
//     link PATH TARGET
//     running NAME                a program with this name runs on the machine itself, which is scanned instead
//     found TEXT                  an expected match with this name
//     = NAME VALUE                an expected variable of the match
//     event CODE                  an expected event
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

    // The name of the running program; empty for a tree of files.
    std::string running() const;
};

struct ShippedSignature {
    std::string guid;
    std::vector<ShippedTree> trees;
};

// Throws if the file is invalid.
std::vector<ShippedSignature> readShippedTrees(const std::filesystem::path& file);

// Creates the files of the tree below a directory.
void plantTree(const ShippedTree& tree, const std::filesystem::path& directory);

}  // namespace quorvistest
