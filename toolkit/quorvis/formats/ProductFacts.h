// What files of common formats tell of the product that they belong to.
#pragma once

#include <string>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// What is not told is empty.
struct ProductFacts {
    std::string name;
    std::string version;
    std::string vendor;
};

// Of a Java archive: its manifest, else the properties that Maven leaves in it. A file of another kind tells
// nothing; `damage` says what is wrong with a damaged one.
ProductFacts readJar(const RandomAccessFile& file, std::string& damage);

// Of a program or library for Windows: its version resource.
ProductFacts readWindowsProgram(const RandomAccessFile& file, std::string& damage);

// Of a Python distribution: METADATA or PKG-INFO.
ProductFacts readPythonMetadata(const RandomAccessFile& file);

}  // namespace toolkit::quorvis
