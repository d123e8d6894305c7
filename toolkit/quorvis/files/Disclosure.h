#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// What signatures may see of the files of a machine: with a scanner that may read everything, no more than any user of
// the machine could, save within the trees that the settings name. The top of the tree is the host's choice. Where the scanner is a plain user, what it may see
// itself. Paths are those in the scanned tree, without links.
class Disclosure {
  public:
    explicit Disclosure(const Settings& settings);
    // `sees`: whether this process may look at more than others.
    Disclosure(const Settings& settings, bool sees);

    // Whether this directory may be searched for the child at `path`, or for any, when `path` is its own.
    bool ofSearch(const struct stat& directory, std::string_view path) const;
    // Whether the names in the directory at `path` may be listed.
    bool ofNames(const struct stat& directory, std::string_view path) const;
    // Whether the content of the file at `path` may be read.
    bool ofContent(const struct stat& file, std::string_view path) const;
    // Whether there are directories of which only some children may be seen.
    bool differs() const { return seesMore_ && !trees_.empty(); }

  private:
    bool liesInTree(std::string_view path) const;

    bool seesMore_;
    std::vector<std::string> trees_;
};

// Whether `path` is `directory` or lies below it.
bool liesIn(std::string_view path, std::string_view directory);

}  // namespace toolkit::quorvis
