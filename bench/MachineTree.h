#pragma once

#include <filesystem>

namespace zavbench {

// Creates a tree with this number of files, like that of a server on which several teams work:
// - the programs and libraries of this machine, as far as they fit into 256 MiB, with its package database;
// - products below /opt, /usr/local, /srv and homes: those of the tests of the catalogue that are not packages;
// - node_modules, virtual environments of Python, gems, Java archives and repositories, with what package managers write;
// - repositories of git, caches, uploads, documentation, translations, icons and kernel modules, which are empty files.
// A quarter of a million files belong to package managers of programming languages.
void makeMachineTree(const std::filesystem::path& root, int files);

}  // namespace zavbench
