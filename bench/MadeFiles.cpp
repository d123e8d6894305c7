#include "bench/MadeFiles.h"

#include <fmt/format.h>

#include <cstdint>
#include <fstream>

namespace zavbench {

namespace {

// Little-endian.
std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
    return bytes;
}

// What the header of a member and its entry in the directory have in common.
std::string describe(std::uint64_t size, std::size_t nameSize) {
    return number(0, 2) + number(0, 2) + number(0, 8) + number(size, 4) + number(size, 4) +
           number(nameSize, 2) + number(0, 2);
}

std::string header(const std::string& name, std::uint64_t size) {
    return "PK\x03\x04" + number(10, 2) + describe(size, name.size()) + name;
}

std::string entry(const std::string& name, std::uint64_t size, std::uint64_t offset) {
    return "PK\x01\x02" + number(10, 2) + number(10, 2) + describe(size, name.size()) + number(0, 10) +
           number(offset, 4) + name;
}

}  // namespace

std::string packageJson(Numbers& numbers, const std::string& name, const std::string& version) {
    std::string text = fmt::format("{{\n  \"name\": \"{}\",\n  \"version\": \"{}\",\n", name, version);
    text += fmt::format("  \"description\": \"{}\",\n", words(numbers, 8 + numbers.below(10), " "));
    text += fmt::format(
        "  \"main\": \"index.js\",\n  \"license\": \"MIT\",\n  \"author\": \"{} <{}@example.org>\",\n",
        words(numbers, 2, " "), words(numbers, 1, ""));
    text += fmt::format(
        "  \"repository\": {{\"type\": \"git\", \"url\": \"git+https://example.org/{}.git\"}},\n", name);
    text += "  \"scripts\": {\n";
    for (std::uint32_t i = numbers.below(8); i > 0; --i)
        text += fmt::format("    \"{}:{}\": \"node {}.js && eslint .\",\n", words(numbers, 1, ""), i,
                            words(numbers, 2, "-"));
    text += "    \"test\": \"mocha\"\n  },\n";
    for (const char* const kind : {"dependencies", "devDependencies"}) {
        text += fmt::format("  \"{}\": {{\n", kind);
        for (std::uint32_t i = numbers.below(25); i > 0; --i)
            text += fmt::format("    \"{}{}\": \"^{}.{}.0\",\n", words(numbers, 2, "-"), i, numbers.below(9),
                                numbers.below(30));
        text += "    \"tslib\": \"^2.6.0\"\n  },\n";
    }
    text += "  \"files\": [\"index.js\", \"lib\", \"dist\"],\n  \"engines\": {\"node\": \">=14\"}\n}\n";
    return text;
}

std::string pythonMetadata(Numbers& numbers, const std::string& name, const std::string& version) {
    std::string text =
        fmt::format("Metadata-Version: 2.1\nName: {}\nVersion: {}\nSummary: {}\nAuthor: {}\nLicense: MIT\n",
                    name, version, words(numbers, 8, " "), words(numbers, 2, " "));
    for (std::uint32_t i = numbers.below(12); i > 0; --i)
        text += fmt::format("Classifier: Programming Language :: Python :: 3.{}\n", i);
    for (std::uint32_t i = numbers.below(20); i > 0; --i)
        text += fmt::format("Requires-Dist: {}{} >={}.{}\n", words(numbers, 2, "-"), i, numbers.below(5),
                            numbers.below(20));
    text += "Description-Content-Type: text/markdown\n\n";
    for (std::uint32_t i = numbers.below(120); i > 0; --i) text += words(numbers, 12, " ") + "\n";
    return text;
}

std::string gemSpecification(Numbers& numbers, const std::string& name, const std::string& version) {
    std::string text = fmt::format(
        "# -*- encoding: utf-8 -*-\n# stub: {0} {1} ruby lib\n\nGem::Specification.new do |s|\n"
        "  s.name = \"{0}\".freeze\n  s.version = \"{1}\"\n\n",
        name, version);
    text += fmt::format("  s.require_paths = [\"lib\".freeze]\n  s.summary = \"{}\".freeze\n",
                        words(numbers, 12, " "));
    for (std::uint32_t i = numbers.below(12); i > 0; --i)
        text += fmt::format("  s.add_runtime_dependency(%q<{}{}>.freeze, [\">= {}\"])\n",
                            words(numbers, 1, ""), i, i);
    return text + "end\n";
}

void makeJar(const std::filesystem::path& path, Numbers& numbers, const std::string& name,
             const std::string& version) {
    const std::string manifestName = "META-INF/MANIFEST.MF";
    const std::string manifest = fmt::format(
        "Manifest-Version: 1.0\r\nCreated-By: 17.0.2\r\nImplementation-Title: {}\r\nImplementation-Version: "
        "{}\r\n"
        "Implementation-Vendor: The {} company\r\n\r\n",
        name, version, words(numbers, 1, ""));
    const std::string start = header(manifestName, manifest.size()) + manifest;
    std::string directory = entry(manifestName, manifest.size(), 0);
    std::uint64_t offset = start.size();
    const std::uint32_t classes = 20 + numbers.below(380);
    for (std::uint32_t i = 0; i < classes; ++i) {
        const std::uint64_t size = 500 + numbers.below(6'000);
        const std::string member =
            fmt::format("org/example/{}/{}{}.class", words(numbers, 1, ""), words(numbers, 2, ""), i);
        directory += entry(member, size, offset);
        offset += header(member, size).size() + size;
    }
    std::ofstream out(path, std::ios::binary);
    out << start;
    out.seekp(static_cast<std::streamoff>(offset));
    out << directory << "PK\x05\x06" << number(0, 4) << number(classes + 1, 2) << number(classes + 1, 2)
        << number(directory.size(), 4) << number(offset, 4) << number(0, 2);
}

}  // namespace zavbench
