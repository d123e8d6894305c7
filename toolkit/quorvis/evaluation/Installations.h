// Which matches of a signature are parts of one installation.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

namespace toolkit::quorvis {

// The directory below which the product of this file is installed: the one above the last bin, sbin, lib, libexec,
// share or include on its way, as /opt/x of /opt/x/bin/y. A directory usr belongs to the one above it: the directories of the
// system are "/", with and without /usr, and those of an image below /srv/x are /srv/x.
// Of any other file it is its directory.
std::string installationOf(std::string_view path);

// The matches so far.
class Installations {
  public:
    struct Part {
        std::string name;
        std::string version;  // empty if it is not known
        std::string path;     // of the file; empty for a match by package
        bool owned = false;   // whether a package manager knows the file
    };

    // Adds a match. Returns false if its installation has one of the same name, version and kind of owner, or one of any
    // version if this match has none.
    bool add(const Part& part);

  private:
    std::map<std::tuple<std::string, std::string, bool>, std::set<std::string>> versions_;
};

}  // namespace toolkit::quorvis
