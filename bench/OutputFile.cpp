#include "bench/OutputFile.h"

#include <array>
#include <fstream>

#include "bench/Words.h"

namespace zavbench {

namespace {

void writeField(std::ostream& out, const char* name, const std::string& value) {
    out << '<' << name << '>' << value << "</" << name << '>';
}

}  // namespace

void writeOutputFile(const std::string& path, int instances) {
    std::ofstream out(path, std::ios::binary);
    Numbers numbers;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Hardware>";
    for (int i = 0; i < instances; ++i) {
        const std::string name = words(numbers, 2, "-") + std::to_string(i);
        const std::string version = std::to_string(numbers.below(9)) + '.' +
                                    std::to_string(numbers.below(99)) + ".2-" +
                                    std::to_string(numbers.below(9)) + "+b1";
        out << "<SoftwarePackages>";
        writeField(out, "InstanceID", "pkg:deb/debian/" + name + '@' + version + "?arch=amd64");
        writeField(out, "Name", name);
        writeField(out, "VersionString", version);
        writeField(out, "Manufacturer",
                   "The " + words(numbers, 2, " ") + " team &lt;team@lists.example.org&gt;");
        writeField(out, "Description", words(numbers, 5 + numbers.below(6), " "));
        writeField(out, "InstallDate", "2026-11-21T06:14:45Z");
        writeField(out, "Architecture", "amd64");
        writeField(out, "InstalledSize", std::to_string(numbers.below(1000000)));
        out << "</SoftwarePackages>";
    }
    out << "</Hardware>";
}

void writeSoftwareOutput(const std::string& path, int results, int variables) {
    static constexpr std::array<const char*, 10> kNames = {"arch",   "bits", "dir",   "group", "home",
                                                           "locale", "name", "owner", "path",  "vendor"};
    std::ofstream out(path, std::ios::binary);
    Numbers numbers;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<MatchedSignatures language=\"1\" complete=\"true\">";
    for (int i = 0; i < results; ++i) {
        out << "<MatchedSignature guid=\"" << identifier(i) << "\" name=\"" << words(numbers, 1, "") << i
            << "\">\n <Metadata><Suite>" << words(numbers, 1, "") << "</Suite></Metadata>\n";
        for (int variable = 0; variable < variables; ++variable) {
            out << " <Variable name=\"" << kNames.at(static_cast<std::size_t>(variable)) << "\" value=\""
                << numbers.below(1000) << "\"/>";
        }
        out << "</MatchedSignature>\n";
    }
    out << "</MatchedSignatures>\n";
}

void writeEmptyWarnings(const std::string& path) {
    std::ofstream(path) << "<Events></Events>\n";
}

}  // namespace zavbench
