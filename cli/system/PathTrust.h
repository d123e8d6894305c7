// Which other users could change what a path leads to.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

constexpr mode_t kWritableByOthers = S_IWGRP | S_IWOTH;
constexpr int kMaxLinks = 40;  // the number of links that the kernel follows in one path

// Something that lets another user replace a file.
struct Weakness {
    std::string path;    // the directory, file or link in question
    std::string reason;  // such as "belongs to the user mallory"
    std::string remedy;  // a command line; empty if there is none

    bool operator==(const Weakness&) const = default;
};

enum class PathKind {
    File,               // other users must not be able to write to it
    Directory,          // other users must not be able to add files to it
    TemporaryDirectory  // other users may add files to it, but must not be able to rename those of this user
};

// The users who may own the files besides root: the user of this process, and under sudo also the calling
// user if he owns part of the path of this command, because he could then replace the command itself.
std::vector<uid_t> trustedUsers(std::string_view command);

// All weaknesses of a path: every directory from the root on, every link, and what the links lead to are examined.
// A missing file is a weakness only if another user could create it.
std::vector<Weakness> findWeaknesses(const std::string& path, PathKind kind,
                                     const std::vector<uid_t>& trusted);

// Adds the weaknesses that are not in the list yet.
void mergeWeaknesses(std::vector<Weakness>& weaknesses, const std::vector<Weakness>& others);

// The weaknesses in one line, such as "PATH belongs to the user mallory; 'chown root PATH' fixes that".
std::string describe(const std::vector<Weakness>& weaknesses);

}  // namespace zavcli
