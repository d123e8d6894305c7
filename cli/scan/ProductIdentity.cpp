#include "cli/scan/ProductIdentity.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <initializer_list>

#include "cli/scan/PackageUrl.h"
#include "cli/scan/ResultMetadata.h"

namespace zavcli {

namespace {

// The value of the first of these fields that is not empty.
std::string firstOf(const std::vector<Field>& fields, std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        std::string value = valueOf(fields, name);
        if (!value.empty()) return value;
    }
    return "";
}

bool isPackageEvidence(const std::vector<Field>& evidence) {
    return valueOf(evidence, "kind") == "package";
}

// The first file that led to the match. The database of a package manager is not the place of a product.
std::string evidentPlace(const Metadata& metadata) {
    constexpr std::array<std::string_view, 7> kKinds{"glob",     "file",        "elf",  "content",
                                                     "property", "fileVersion", "bytes"};
    for (const std::vector<Field>& evidence : metadata.evidence) {
        if (std::find(kKinds.begin(), kKinds.end(), valueOf(evidence, "kind")) != kKinds.end())
            return valueOf(evidence, "source");
    }
    return "";
}

void addPackage(ProductIdentity& identity, const MatchedSignature& match, const Metadata& metadata) {
    if (const Field* const package = findField(match.variables, "package"); package != nullptr) {
        identity.package = package->value;
        identity.packaging = package->value.empty() ? Packaging::NotOwned : Packaging::Owned;
        return;
    }
    const auto evidence = std::find_if(metadata.evidence.begin(), metadata.evidence.end(), isPackageEvidence);
    if (evidence == metadata.evidence.end()) return;
    identity.package = valueOf(*evidence, "name");
    identity.packaging = Packaging::Owned;
}

std::string typeAndName(const std::string& package) {
    const std::optional<PackageUrl> url = parsePackageUrl(package);
    return url ? fmt::format("{} {}", url->type, url->name) : package;
}

}  // namespace

ProductIdentity identityOf(const MatchedSignature& match) {
    const Metadata metadata = readMetadata(match.metadata);
    ProductIdentity identity;
    // A signature of many products, such as one per tag, reports which one it found.
    identity.name = valueOf(match.variables, "product");
    if (identity.name.empty()) identity.name = match.name.empty() ? match.guid : match.name;
    identity.version = valueOf(match.variables, "version");
    identity.place = firstOf(match.variables, {"path", "home"});
    if (identity.place.empty()) identity.place = evidentPlace(metadata);
    identity.publisher = valueOf(metadata.texts, "Publisher");
    identity.home = firstOf(metadata.texts, {"Home", "Homepage"});
    identity.cpe = valueOf(match.variables, "cpe");
    if (identity.cpe.empty()) identity.cpe = valueOf(metadata.texts, "Cpe");
    identity.purl = valueOf(match.variables, "purl");
    if (identity.purl.empty()) identity.purl = valueOf(metadata.texts, "Purl");
    addPackage(identity, match, metadata);
    return identity;
}

bool isLanguagePackage(const MatchedSignature& match) {
    const std::optional<PackageUrl> url = parsePackageUrl(valueOf(match.variables, "purl"));
    return url && isLanguageType(url->type);
}

std::string packageText(const ProductIdentity& identity) {
    if (!identity.package.empty()) return typeAndName(identity.package);
    const std::optional<PackageUrl> url = parsePackageUrl(identity.purl);
    // The name of the product is that of the package.
    if (url && isLanguageType(url->type)) return url->type;
    return identity.packaging == Packaging::NotOwned ? "none" : "unknown";
}

}  // namespace zavcli
