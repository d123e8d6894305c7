// Java archives, and the archives within them.
#include <algorithm>
#include <optional>

#include "toolkit/machine/packages/PackageUrl.h"
#include "toolkit/quorvis/formats/Components.h"
#include "toolkit/quorvis/formats/ZipArchive.h"

namespace toolkit::quorvis {

namespace {

constexpr int kMaxLevels = 2;  // of archives within the file
constexpr std::uint64_t kMaxTextSize = std::uint64_t{1} << 20;
constexpr std::uint64_t kMaxUnpacked = std::uint64_t{256} << 20;  // of all members of a file
constexpr std::string_view kManifest = "META-INF/MANIFEST.MF";

bool isMaven(std::string_view name) {
    return name.starts_with("META-INF/maven/") && name.ends_with("/pom.properties");
}

bool isArchive(std::string_view name) {
    return name.ends_with(".jar") || name.ends_with(".war") || name.ends_with(".ear");
}

// The name of a file without directories and without the suffix of an archive.
std::string_view baseOf(std::string_view path) {
    path = path.substr(path.rfind('/') + 1);
    return isArchive(path) ? path.substr(0, path.size() - 4) : path;
}

// What one archive says of itself.
struct Archive {
    bool manifest = false;
    ProductFacts facts;                // of the manifest
    std::vector<Component> artifacts;  // from the properties that Maven adds
};

Component artifactFrom(std::string_view properties) {
    Component artifact;
    artifact.name = propertyValue(properties, "artifactId").value_or("");
    artifact.group = propertyValue(properties, "groupId").value_or("");
    artifact.version = propertyValue(properties, "version").value_or("");
    if (!artifact.name.empty() && !artifact.group.empty())
        artifact.purl = packageUrl("maven", artifact.group, artifact.name, artifact.version, {});
    return artifact;
}

// Where the version begins in "log4j-core-2.17.1": behind the first dash before a digit.
std::size_t versionIn(std::string_view base) {
    for (std::size_t at = base.find('-'); at != std::string_view::npos; at = base.find('-', at + 1)) {
        if (at + 1 < base.size() && base[at + 1] >= '0' && base[at + 1] <= '9') return at + 1;
    }
    return std::string_view::npos;
}

// An archive that Maven did not describe.
Component describedByManifest(const ProductFacts& facts, std::string_view base) {
    Component component;
    component.version = facts.version;
    const std::size_t at = versionIn(base);
    if (at != std::string_view::npos) {
        component.name = base.substr(0, at - 1);
        if (component.version.empty()) component.version = base.substr(at);
    } else {
        component.name = base;
    }
    return component;
}

// The artifact that the archive is, among those that it contains: the longest name with which the file's name begins.
std::optional<std::size_t> ownArtifact(const std::vector<Component>& artifacts, std::string_view base) {
    if (artifacts.size() == 1) return 0;
    std::optional<std::size_t> own;
    for (std::size_t i = 0; i < artifacts.size(); ++i) {
        const std::string& name = artifacts[i].name;
        const bool begins = base == name || base.starts_with(name + "-");
        if (begins && !name.empty() && (!own || name.size() > artifacts[*own].name.size())) own = i;
    }
    return own;
}

class Reader {
  public:
    Reader(const ComponentLimits& limits, const ProgressCheck& checkProgress)
        : limits_(limits), checkProgress_(checkProgress) {}

    // `place` is that of the archive within the file, `container` that of the archive around it, and `path` its name.
    void read(const RandomAccessFile& file, std::string_view path, const std::string& place,
              const std::string& container, int level) {
        std::vector<ZipMember> members;
        const auto wanted = [level](std::string_view name) {
            return name == kManifest || isMaven(name) || (level < kMaxLevels && isArchive(name));
        };
        const ZipReading reading = listZip(file, wanted, members);
        if (reading == ZipReading::Damaged) fail("an archive is damaged", place);
        if (reading == ZipReading::NoArchive) return;
        addArchive(describe(file, members, place), path, place, container, level);
        for (const ZipMember& member : members) {
            if (checkProgress_) checkProgress_();
            if (list_.tooMany || list_.tooLarge) return;
            if (isArchive(member.name)) readNested(file, member, place, level);
        }
    }

    ComponentList takeList() { return std::move(list_); }

  private:
    void fail(std::string_view problem, const std::string& place) {
        if (list_.problem.empty())
            list_.problem = std::string(problem) + (place.empty() ? "" : ": " + place.substr(0, 200));
    }

    // False if all members together have too many bytes.
    bool charge(std::uint64_t bytes, const std::string& place) {
        unpacked_ += bytes;
        if (unpacked_ <= kMaxUnpacked) return true;
        list_.tooLarge = true;
        list_.problem.clear();
        fail("more than " + std::to_string(kMaxUnpacked) + " bytes would have to be unpacked", place);
        return false;
    }

    Archive describe(const RandomAccessFile& file, const std::vector<ZipMember>& members,
                     const std::string& place) {
        Archive archive;
        std::string text;
        for (const ZipMember& member : members) {
            if (isArchive(member.name)) continue;
            const bool whole = readZipMember(file, member, kMaxTextSize, text);
            if (!whole) fail("a member of an archive is damaged", place + "!/" + member.name);
            if (!charge(text.size(), place)) break;
            if (member.name == kManifest) {
                archive.manifest = true;
                archive.facts = readJarManifest(text);
            } else {
                archive.artifacts.push_back(artifactFrom(text));
            }
        }
        return archive;
    }

    void addArchive(Archive archive, std::string_view path, const std::string& place,
                    const std::string& container, int level) {
        const std::string_view base = baseOf(path);
        const std::optional<std::size_t> own = ownArtifact(archive.artifacts, base);
        // Other files are archives of this kind as well.
        if (!own && !archive.manifest && !isArchive(path)) return;
        Component main = own ? archive.artifacts[*own] : describedByManifest(archive.facts, base);
        if (main.version.empty()) main.version = archive.facts.version;
        main.container = container;
        add(std::move(main), place, level == 0 ? "main" : "dependency");
        for (std::size_t i = 0; i < archive.artifacts.size(); ++i) {
            if (own == i || archive.artifacts[i].name.empty()) continue;
            archive.artifacts[i].container = place;
            add(std::move(archive.artifacts[i]), place, "dependency");
        }
    }

    void add(Component component, const std::string& place, std::string_view role) {
        component.place = place;
        component.role = role;
        list_.add(std::move(component), limits_.components);
    }

    void readNested(const RandomAccessFile& file, const ZipMember& member, const std::string& place,
                    int level) {
        const std::string inside = place + "!/" + member.name;
        if (const auto stored = storedMember(file, member)) {
            read(*stored, member.name, inside, place, level + 1);
            return;
        }
        std::string content;
        // One more byte shows that the member is too large.
        const bool whole = readZipMember(file, member, limits_.unpacked + 1, content);
        if (!charge(content.size(), inside)) return;
        if (content.size() > limits_.unpacked) {
            fail("a member is larger than " + std::to_string(limits_.unpacked) + " bytes", inside);
        } else if (!whole) {
            fail("a member of an archive is damaged", inside);
        } else {
            read(RandomAccessFile(std::move(content), file.beforeRead()), member.name, inside, place,
                 level + 1);
        }
    }

    const ComponentLimits& limits_;
    const ProgressCheck& checkProgress_;
    std::uint64_t unpacked_ = 0;
    ComponentList list_;
};

}  // namespace

ComponentList readJarComponents(const RandomAccessFile& file, std::string_view path,
                                const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    Reader reader(limits, checkProgress);
    reader.read(file, path, "", "", 0);
    return reader.takeList();
}

}  // namespace toolkit::quorvis
