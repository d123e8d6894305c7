#include "bench/Catalogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>

#include "cli/scan/Catalogue.h"

namespace zavbench {

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Calls `visit` with the place and the length of each value of this attribute.
template <typename Visit>
void forEachValue(const std::string& text, const std::string& attribute, const Visit& visit) {
    const std::string lead = " " + attribute + "=\"";
    for (std::size_t at = text.find(lead); at != std::string::npos; at = text.find(lead, at + 1)) {
        const std::size_t begin = at + lead.size();
        visit(begin, text.find('"', begin) - begin);
    }
}

// Puts this before the last name of each value, or before the value if it has no slash.
void changeValues(std::string& text, const std::string& attribute, const std::string& before) {
    std::vector<std::size_t> places;
    forEachValue(text, attribute, [&](std::size_t begin, std::size_t length) {
        const std::size_t slash = text.substr(begin, length).rfind('/');
        places.push_back(attribute == "regex" || slash == std::string::npos ? begin : begin + slash + 1);
    });
    for (auto place = places.rbegin(); place != places.rend(); ++place) text.insert(*place, before);
}

bool isPerPackage(const std::string& signature) {
    return signature.find("guid=\"zav.package.") != std::string::npos;
}

}  // namespace

std::vector<std::string> shippedSignatures() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(ZAV_SIGNATURES)) files.push_back(entry.path());
    std::ranges::sort(files);
    constexpr std::string_view kEnd = "</Signature>";
    std::vector<std::string> signatures;
    for (const fs::path& file : files) {
        const std::string text = contentOf(file);
        for (std::size_t at = text.find("<Signature "); at != std::string::npos;
             at = text.find("<Signature ", at + 1))
            signatures.push_back(text.substr(at, text.find(kEnd, at) + kEnd.size() - at));
    }
    return signatures;
}

std::vector<std::string> multiplied(const std::vector<std::string>& signatures, std::size_t count) {
    std::vector<std::string> all = signatures;
    for (std::size_t copy = 1; all.size() < count; ++copy) {
        for (const std::string& signature : signatures) {
            if (all.size() == count) break;
            if (isPerPackage(signature)) continue;
            std::string text = signature;
            text.insert(text.find('"', text.find("guid=\"") + 6), fmt::format(".copy{}", copy));
            changeValues(text, copy % 2 == 0 ? "regex" : "pattern", fmt::format("copy{}", copy));
            all.push_back(std::move(text));
        }
    }
    return all;
}

std::vector<std::string> signaturesOfPatterns(const std::vector<std::string>& signatures) {
    std::set<std::string> patterns;
    for (const std::string& signature : signatures) {
        forEachValue(signature, "pattern", [&](std::size_t begin, std::size_t length) {
            patterns.insert(signature.substr(begin, length));
        });
    }
    std::vector<std::string> all;
    for (const std::string& pattern : patterns) {
        all.push_back(
            fmt::format("<Signature guid=\"{}\" name=\"${{f.path}}\">"
                        "<Each><Glob id=\"f\" pattern=\"{}\" kind=\"file\"/></Each>"
                        "<Output><Variable name=\"size\" value=\"${{f.size}}\"/></Output></Signature>",
                        all.size(), pattern));
    }
    return all;
}

void writeSignatureFile(const fs::path& path, const std::vector<std::string>& signatures) {
    std::ofstream out(path);
    out << "<Signatures>\n";
    for (const std::string& signature : signatures) out << signature << '\n';
    out << "</Signatures>\n";
}

void writeCatalogueSettings(const fs::path& path) {
    std::ofstream out(path);
    out << "<Configuration>\n";
    for (const zavcli::Setting& setting : zavcli::catalogueSettings()) {
        out << fmt::format("<Plugin name=\"{}\"><Attribute name=\"{}\" value=\"{}\"/></Plugin>\n",
                           setting.plugin, setting.attribute, setting.value);
    }
    out << "</Configuration>\n";
}

}  // namespace zavbench
