#pragma once

#include <string_view>

namespace toolkit {

// One stanza of a dpkg status file. All texts are parts of the file; a field that the stanza lacks is empty.
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

// Reads the stanzas of a dpkg status file one after the other. A stanza without a package name is passed
// over; of a field that is given twice the first one counts, as nothing tells which one is right.
class DpkgStatusParser {
  public:
    // `text` outlives the stanzas.
    explicit DpkgStatusParser(std::string_view text) : rest_(text) {}

    // False at the end of the file, with `stanza` emptied.
    bool next(DpkgStanza& stanza);

  private:
    std::string_view rest_;
};

// Whether a status says that the package's files are in place and work. That leaves out what dpkg began and
// did not finish (half-installed, unpacked, half-configured: nobody can rely on it) and what it only
// remembers (config-files); a package that merely waits for triggers works.
bool isInstalled(std::string_view status);

// The parts of [epoch:]upstream[-revision].
struct DpkgVersion {
    std::string_view epoch;
    std::string_view upstream;
    std::string_view revision;
};
DpkgVersion splitDpkgVersion(std::string_view version);

}  // namespace toolkit
