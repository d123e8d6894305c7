#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zavbench {

// The text of each signature in share/zav/signatures, in the order of the files.
std::vector<std::string> shippedSignatures();

// These signatures, so often that there are `count`. Every second copy looks for files of other names, the others for other
// texts in the same files. Signatures that yield one result per package are not repeated, because there is one for each
// kind of packages.
std::vector<std::string> multiplied(const std::vector<std::string>& signatures, std::size_t count);

// For each pattern of the signatures, one that reports all files that it names.
std::vector<std::string> signaturesOfPatterns(const std::vector<std::string>& signatures);

void writeSignatureFile(const std::filesystem::path& path, const std::vector<std::string>& signatures);

// With the settings that `zav sw` uses for the shipped signatures.
void writeCatalogueSettings(const std::filesystem::path& path);

}  // namespace zavbench
