// Files as package managers of programming languages write them.
#pragma once

#include <filesystem>
#include <string>

#include "bench/Words.h"

namespace zavbench {

// package.json of an npm package, with scripts and dependencies.
std::string packageJson(Numbers& numbers, const std::string& name, const std::string& version);

// METADATA of a Python distribution, with a description.
std::string pythonMetadata(Numbers& numbers, const std::string& name, const std::string& version);

// The .gemspec file of an installed gem.
std::string gemSpecification(Numbers& numbers, const std::string& name, const std::string& version);

// Creates a Java archive with a manifest and up to 400 classes. The classes have sizes, but no content on the disk.
void makeJar(const std::filesystem::path& path, Numbers& numbers, const std::string& name,
             const std::string& version);

}  // namespace zavbench
