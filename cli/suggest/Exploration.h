// Signatures that look at one program or directory, whatever it contains, and what they find. So the scanner reads the
// files, in its sandbox and with its limits, and finds only what a signature can find.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// A version in a file, with the text around it.
struct VersionText {
    std::string path;
    std::string before;
    std::string version;
    std::string after;
    bool isProgram = false;  // found in the constant texts of a program, not in a plain file
};

// A file that states name and version of a product in a known format.
struct MetadataFile {
    std::string path;
    std::string format;  // of Property or FileVersion
    std::string name;    // empty if the file does not name the product
    std::string version;
};

struct Findings {
    std::vector<VersionText> texts;
    std::vector<MetadataFile> files;
    std::vector<std::string> programs;  // in the directory
    std::vector<std::string> packages;  // package URLs of installed packages with a similar name
};

// The name of the product that the last part of the path suggests: without directories, versions and endings.
std::string productNameOf(const std::string& path);

// Where a version such as "1.2" begins, after at least one other character; npos if there is none.
std::size_t versionBegin(std::string_view text);

// An expression for a version, as one group.
extern const char* const kVersionPattern;

// The text as an expression that matches only itself, except that other numbers match as well.
std::string escapedExpression(std::string_view text);

// Signature elements for the texts of a program or another file.
std::string signaturesForFile(const std::string& path, const std::string& product);

// A signature element for the installed packages whose names begin with that of the product.
std::string signatureForPackages(const std::string& product);

// Signature elements for the metadata files and programs of a directory.
std::string signaturesForDirectory(const std::string& path);

// Adds what the results of these signatures tell.
void addFindings(Findings& findings, const std::vector<MatchedSignature>& results);

}  // namespace zavcli
