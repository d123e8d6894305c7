// The product information in files of common formats.
#pragma once

#include <string>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// Missing information is empty.
struct ProductFacts {
    std::string name;
    std::string version;
    std::string vendor;
};

// Reads a Java archive: its manifest, and the properties that Maven adds. The result is empty for files of other formats.
// `damage` describes the problem of a damaged file.
ProductFacts readJar(const RandomAccessFile& file, std::string& damage);

// Reads the version resource of a program or library for Windows.
ProductFacts readWindowsProgram(const RandomAccessFile& file, std::string& damage);

// Reads METADATA or PKG-INFO of a Python distribution.
ProductFacts readPythonMetadata(const RandomAccessFile& file);

}  // namespace toolkit::quorvis
