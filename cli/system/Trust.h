// Who else could change what a path leads to.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

// Something that lets another user put something else into the place of a file.
struct Weakness {
    std::string path;    // the directory, file or link that is at fault
    std::string reason;  // such as "belongs to the user mallory"
    std::string remedy;  // a command line; empty where there is none

    bool operator==(const Weakness&) const = default;
};

enum class Leads {
    ToFile,                // others must not write to it
    ToDirectory,           // others must not put anything into it
    ToTemporaryDirectory,  // others may put files into it, but must not rename those of this user
};

// Users whose files may be trusted besides those of root: this process's own and, where root acts for a user by
// sudo, that user when this very command lies in a place of his, so that he could replace it anyway.
std::vector<uid_t> trustedUsers(std::string_view command);

// All weaknesses of a path, of which every directory from the root on, every link and what it leads to are looked at.
// What does not exist is no weakness where nobody else could make it.
std::vector<Weakness> weaknessesOf(const std::string& path, Leads leads, const std::vector<uid_t>& trusted);

// Adds those that are not there yet.
void addOthers(std::vector<Weakness>& weaknesses, const std::vector<Weakness>& others);

// "PATH belongs to the user mallory; 'chown root PATH' mends that", several of them with "; " between.
std::string describe(const std::vector<Weakness>& weaknesses);

}  // namespace zavcli
