#pragma once

#include <string_view>

namespace toolkit {

// One stanza of a dpkg status file. All texts are parts of the file. A missing field is empty.
struct DpkgStanza {
    std::string_view package;
    std::string_view status;  // "install ok installed"
    std::string_view version;
    std::string_view architecture;
    std::string_view multiArch;
    std::string_view maintainer;
    std::string_view description;  // first line
    std::string_view source;       // without the version in parentheses
    std::string_view section;
    std::string_view installedSize;  // KiB
};

// Reads the stanzas of a dpkg status file one after the other. A stanza without a package name is skipped.
// The first of two equal fields counts.
class DpkgStatusParser {
  public:
    // REQUIRES: `text` outlives the stanzas.
    explicit DpkgStatusParser(std::string_view text) : rest_(text) {}

    // False at the end of the file, with `stanza` emptied.
    bool next(DpkgStanza& stanza);

  private:
    std::string_view rest_;
};

// Whether a package with this status is usable: it is installed or waits for triggers only. Packages that dpkg did not finish
// (half-installed, unpacked, half-configured) or removed (config-files) are not.
bool isInstalled(std::string_view status);

// Whether the files of a package with this status are there, but dpkg did not configure it: unpacked or half-configured.
bool isUnfinished(std::string_view status);

// The parts of [epoch:]upstream[-revision].
struct DpkgVersion {
    std::string_view epoch;
    std::string_view upstream;
    std::string_view revision;
};
DpkgVersion splitDpkgVersion(std::string_view version);

}  // namespace toolkit
