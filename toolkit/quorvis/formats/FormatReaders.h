// The readers of values and of product information in files of common formats: one source file per format.
#pragma once

#include <cstddef>
#include <cstdint>
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

// The last value of a key in a properties file of Java.
std::optional<std::string> propertyValue(std::string_view text, std::string_view key,
                                         const ProgressCheck& checkProgress = {});

// A path from the root element of a document to elements, or to an attribute of elements:
// "/project/dependency[@scope='test'][2]/version", "/*/plugin[name='x']/@id".
struct XmlSelection {
    struct Test {
        enum class Kind : std::uint8_t { Position, Attribute, Child };
        Kind kind = Kind::Position;
        std::size_t position = 0;  // among the siblings that pass the tests before, from 1
        std::string name;          // of the attribute or of the child element
        std::string value;         // the whole text of it
    };
    struct Step {
        std::string name;
        bool any = false;  // of any name
        std::vector<Test> tests;
    };
    std::vector<Step> steps;
    std::string attribute;  // empty if the text of the elements is selected

    // None, with `problem` set, if the syntax is wrong.
    static std::optional<XmlSelection> parse(std::string_view text, std::string& problem);
};

struct SelectedValues {
    std::vector<std::string> values;  // in document order, without surrounding white space
    bool tooMany = false;             // there are more than `limit` values
    std::optional<std::string> problem;
};
SelectedValues selectValues(std::string_view document, const XmlSelection& selection, std::size_t limit,
                            const ProgressCheck& checkProgress = {});

// The product information of a file. Missing information is empty.
struct ProductFacts {
    std::string name;
    std::string version;
    std::string vendor;
};

// Reads a Java archive: its manifest, and the properties that Maven adds. The result is empty for files of other formats.
// `damage` describes the problem of a damaged file.
ProductFacts readJar(const RandomAccessFile& file, std::string& damage);

// Reads a manifest.
ProductFacts readJarManifest(std::string_view text);

// Reads the version resource of a program or library for Windows.
ProductFacts readWindowsProgram(const RandomAccessFile& file, std::string& damage);

// Reads METADATA or PKG-INFO of a Python distribution.
ProductFacts readPythonMetadata(const RandomAccessFile& file);

}  // namespace toolkit::quorvis
