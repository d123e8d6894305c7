#include <algorithm>
#include <optional>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/formats/ZipArchive.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kManifest = "META-INF/MANIFEST.MF";
constexpr std::uint64_t kMaxMemberSize = std::uint64_t{1} << 20;

bool isMavenProperties(std::string_view name) {
    return name.starts_with("META-INF/maven/") && name.ends_with("/pom.properties");
}

// The main section of a manifest, which ends at the first empty line. A line that starts with a blank continues the
// previous line.
class Manifest {
  public:
    explicit Manifest(std::string_view text) {
        for (std::string_view line; nextLine(text, line) && !line.empty();) {
            if (line.front() == ' ' && !entries_.empty()) {
                entries_.back().second.append(line.substr(1));
            } else {
                const std::string_view name = takeField(line, ':');
                entries_.emplace_back(name, line);
            }
        }
    }

    // The first of these entries with a value. "%name" is not a value: it refers to another file.
    std::string first(std::initializer_list<std::string_view> names) const {
        for (const std::string_view name : names) {
            const auto isNamed = [name](const auto& entry) { return entry.first == name; };
            const auto found = std::ranges::find_if(entries_, isNamed);
            const std::string_view value = found == entries_.end() ? "" : trimmed(found->second);
            if (!value.empty() && value.front() != '%') return std::string(value);
        }
        return {};
    }

  private:
    std::vector<std::pair<std::string, std::string>> entries_;
};

void takeMavenProperties(std::string_view text, ProductFacts& facts) {
    const auto fill = [text](std::string& fact, std::string_view key) {
        if (fact.empty()) fact = propertyValue(text, key).value_or("");
    };
    fill(facts.name, "artifactId");
    fill(facts.version, "version");
    fill(facts.vendor, "groupId");
}

}  // namespace

ProductFacts readJarManifest(std::string_view text) {
    const Manifest manifest(text);
    ProductFacts facts;
    facts.name = manifest.first({"Implementation-Title", "Bundle-Name", "Bundle-SymbolicName"});
    // "org.example.core;singleton:=true"
    facts.name.resize(std::min(facts.name.find(';'), facts.name.size()));
    facts.version = manifest.first({"Implementation-Version", "Bundle-Version"});
    facts.vendor = manifest.first({"Implementation-Vendor", "Bundle-Vendor"});
    return facts;
}

ProductFacts readJar(const RandomAccessFile& file, std::string& damage) {
    std::vector<ZipMember> members;
    const auto wanted = [](std::string_view name) { return name == kManifest || isMavenProperties(name); };
    if (listZip(file, wanted, members) == ZipReading::Damaged) damage = "the archive is damaged";

    ProductFacts facts;
    std::string text;
    const auto manifest = std::ranges::find(members, kManifest, &ZipMember::name);
    if (manifest != members.end()) {
        if (!readZipMember(file, *manifest, kMaxMemberSize, text)) damage = "the manifest is damaged";
        facts = readJarManifest(text);
    }
    const bool complete = !facts.name.empty() && !facts.version.empty() && !facts.vendor.empty();
    const auto isMaven = [](const ZipMember& member) { return isMavenProperties(member.name); };
    // With the properties of several projects, the product is not known.
    if (complete || std::ranges::count_if(members, isMaven) != 1) return facts;
    const auto properties = std::ranges::find_if(members, isMaven);
    if (!readZipMember(file, *properties, kMaxMemberSize, text)) damage = "the Maven properties are damaged";
    takeMavenProperties(text, facts);
    return facts;
}

}  // namespace toolkit::quorvis
