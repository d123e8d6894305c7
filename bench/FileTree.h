#pragma once

#include <filesystem>

namespace zavbench {

// The content of a file tree for a set of signatures (see MixedSignatures.h).
struct FileTree {
    std::filesystem::path root;
    int files = 0;     // number of files of all kinds
    int products = 0;  // number of products; the tree contains every tenth
};

// Creates a tree with this number of regular files, about ten per directory, below /usr, /opt, /srv and /home, and
// with this machine's package database. Product number N has a directory "productN" with the files "release",
// "libproductN.so.1" and "productN.conf".
void makeFileTree(const FileTree& tree);

}  // namespace zavbench
