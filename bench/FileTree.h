#pragma once

#include <filesystem>

namespace zavbench {

// What stands in a tree of files for a feed of signatures to find (see MixedSignatures.h).
struct FileTree {
    std::filesystem::path root;
    int files = 0;     // of all kinds
    int products = 0;  // every tenth of the feed is there
};

// Makes a tree of so many regular files, some ten of them a directory, below /usr, /opt, /srv and /home, with this
// machine's package database. Product number N has a directory "productN" somewhere in it, which holds "release",
// "libproductN.so.1" and "productN.conf".
void makeFileTree(const FileTree& tree);

}  // namespace zavbench
