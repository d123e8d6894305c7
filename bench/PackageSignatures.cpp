#include "bench/PackageSignatures.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <fstream>
#include <sstream>

#include "bench/Process.h"
#include "bench/Words.h"

namespace zavbench {

namespace {

std::vector<std::string> installedPackages() {
    const Finished query = runProcess({"dpkg-query", "-W", "-f", "${binary:Package}\n"});
    std::vector<std::string> names;
    std::istringstream lines(query.output);
    for (std::string line; std::getline(lines, line);) names.push_back(line.substr(0, line.find(':')));
    return names;
}

}  // namespace

std::vector<std::string> packageNames(std::size_t count) {
    const std::vector<std::string> installed = installedPackages();
    std::vector<std::string> names;
    std::size_t next = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const bool absent = installed.empty() || i % 5 == 4;
        names.push_back(absent ? fmt::format("absent-package-{}", i) : installed[next++ % installed.size()]);
    }
    return names;
}

void writePackageSignatures(const std::string& path, const std::vector<std::string>& names) {
    std::ofstream out(path);
    out << "<Signatures>\n";
    for (std::size_t i = 0; i < names.size(); ++i) {
        fmt::print(out,
                   "<Signature guid=\"{}\" name=\"{}\"><Match><Package id=\"p\" name=\"{}\"/></Match>\n"
                   " <Output><Variable name=\"version\" value=\"${{p.version}}\"/></Output></Signature>\n",
                   identifier(static_cast<int>(i)), names[i], names[i]);
    }
    out << "</Signatures>\n";
}

void writeOvalDefinitions(const std::string& path, const std::vector<std::string>& names) {
    std::ofstream out(path);
    out << "<oval_definitions xmlns=\"http://oval.mitre.org/XMLSchema/oval-definitions-5\"\n"
           " xmlns:oval=\"http://oval.mitre.org/XMLSchema/oval-common-5\"\n"
           " xmlns:linux=\"http://oval.mitre.org/XMLSchema/oval-definitions-5#linux\">\n"
           "<generator><oval:schema_version>5.11</oval:schema_version>"
           "<oval:timestamp>2026-01-01T00:00:00</oval:timestamp></generator>\n<definitions>\n";
    for (std::size_t i = 1; i <= names.size(); ++i) {
        fmt::print(
            out,
            "<definition class=\"inventory\" id=\"oval:b:def:{}\" version=\"1\"><metadata><title>{}</title>"
            "<description>installed</description></metadata>"
            "<criteria><criterion test_ref=\"oval:b:tst:{}\"/></criteria></definition>\n",
            i, names[i - 1], i);
    }
    out << "</definitions><tests>\n";
    for (std::size_t i = 1; i <= names.size(); ++i) {
        fmt::print(
            out,
            "<linux:dpkginfo_test check=\"all\" check_existence=\"at_least_one_exists\" comment=\"installed\""
            " id=\"oval:b:tst:{}\" version=\"1\"><linux:object object_ref=\"oval:b:obj:{}\"/>"
            "</linux:dpkginfo_test>\n",
            i, i);
    }
    out << "</tests><objects>\n";
    for (std::size_t i = 1; i <= names.size(); ++i) {
        fmt::print(out,
                   "<linux:dpkginfo_object id=\"oval:b:obj:{}\" version=\"1\"><linux:name>{}</linux:name>"
                   "</linux:dpkginfo_object>\n",
                   i, names[i - 1]);
    }
    out << "</objects></oval_definitions>\n";
}

}  // namespace zavbench
