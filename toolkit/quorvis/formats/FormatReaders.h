// The readers of values and of product information in files of common formats: one source file per format.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/RandomAccessFile.h"

namespace toolkit::quorvis {

// The maximum size of a value from a file. Longer values are cut.
constexpr std::size_t kMaxValueSize = std::size_t{8} << 10;

// Called repeatedly while untrusted data is parsed. Throws when the parsing must end, for example at a deadline.
using ProgressCheck = std::function<void()>;

// The next functions return the value of a key. If the key occurs several times, the last one counts.

// Reads a properties file of Java.
std::optional<std::string> propertyValue(std::string_view text, std::string_view key,
                                         const ProgressCheck& checkProgress = {});

// Reads an ini file. An empty section stands for the keys before the first section. Quotes around the value are removed.
std::optional<std::string> iniValue(std::string_view text, std::string_view section, std::string_view key,
                                    const ProgressCheck& checkProgress = {});

struct JsonValue {
    std::optional<std::string> value;   // of a string, number or boolean
    std::optional<std::size_t> damage;  // offset of a syntax error
};
// Reads a JSON document. The key is a JSON pointer ("/packages/0/name") or names separated by dots ("packages.0.name").
JsonValue jsonValue(std::string_view text, std::string_view key, const ProgressCheck& checkProgress = {});

// The product information of a file. Missing information is empty.
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
