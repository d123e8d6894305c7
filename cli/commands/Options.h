// Parses the command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/scan/LogPrinter.h"

namespace zavcli {

enum class Command {
    Summary,
    Hardware,
    Software,
    Facts,
    Sbom,
    Report,
    Export,
    Diff,
    Capture,
    Groups,
    Doctor
};
enum class Format { Table, Json, JsonLines, Csv, Xml, Yaml };
enum class FactFormat { Ansible, Prometheus };
enum class BillFormat { CycloneDx, Spdx };

struct Options {
    Command command = Command::Summary;
    std::vector<std::string> commandNames;  // all that there are
    std::vector<std::string> groups;        // as typed
    std::vector<std::string> signatures;  // files and directories; empty for those that come with the command
    std::vector<std::string> variables;   // as typed
    std::vector<std::string> settings;    // as typed
    std::vector<std::string> guids;       // results to show; empty for all
    bool list = false;                    // only list the signatures
    bool details = false;                 // in the table, a paragraph per result
    bool unmanaged = false;               // only results that no package manager owns
    bool check = false;                   // only check whether the files are valid
    std::optional<std::string> suggest;   // draft a signature for this program or directory
    std::optional<std::string> explain;   // explain how this signature is decided
    Format format = Format::Table;
    FactFormat facts = FactFormat::Ansible;
    BillFormat bill = BillFormat::CycloneDx;
    bool typed = false;                       // JSON and YAML have numbers, booleans and arrays
    std::optional<std::string> csvDirectory;  // a file per group in this directory
    std::string archive;                      // the file for what a scan reads
    std::string before;                       // the inventories to compare
    std::string after;
    bool ignoreAccess = false;           // leave out what only one of them could see
    bool noHardware = false;             // of the page: only software
    bool noSoftware = false;             // of the page: only hardware
    std::optional<std::string> from;     // make the page of this saved inventory
    std::optional<std::string> compare;  // mark on the page what differs from this inventory
    std::string database;                // the SQLite database to write
    std::vector<std::string> saved;      // the inventories to export; empty for a scan
    std::optional<std::string> host;     // the name of their host
    bool hashes = false;                 // hash the files in the evidence
    bool csvRaw = false;                 // do not protect values that look like formulas
    bool all = false;
    bool sanitize = false;    // hide what identifies the machine and its users
    bool noVolatile = false;  // leave out what changes while the machine stays the same
    bool pretty = false;      // let the scanner break and indent the lines of its file
    std::optional<std::string> output;
    std::optional<std::string> toolkit;
    std::optional<std::string> root;
    Verbosity verbosity = Verbosity::Errors;
};

// The text that the command line asks for, such as that of --help.
struct HelpText {
    std::string text;
};

// Throws Failure (bad usage).
std::variant<Options, HelpText> parseOptions(int argc, const char* const* argv);

}  // namespace zavcli
