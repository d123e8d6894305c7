#include "cli/scan/ProductIdentity.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

MatchedSignature match(std::vector<Field> variables, const std::string& metadata = "") {
    return {"zav.x", "X", std::move(variables), "<Metadata>" + metadata + "</Metadata>"};
}

constexpr const char* kPackageEvidence =
    "<Evidence kind=\"package\" source=\"/var/lib/dpkg/status\" name=\"x\" version=\"1\"/>";

TEST(ProductIdentity, PlaceIsTheVariableElseTheFirstFileOfTheEvidence) {
    const std::string evidence = std::string(kPackageEvidence) +
                                 "<Evidence kind=\"glob\" source=\"/usr/bin/x\"/>"
                                 "<Evidence kind=\"file\" source=\"/usr/lib/x\"/>";
    EXPECT_EQ("/opt/x", identityOf(match({{"home", "/srv"}, {"path", "/opt/x"}}, evidence)).place);
    EXPECT_EQ("/srv", identityOf(match({{"home", "/srv"}}, evidence)).place);
    EXPECT_EQ("/usr/bin/x", identityOf(match({}, evidence)).place);
    EXPECT_EQ("", identityOf(match({}, kPackageEvidence)).place);
}

TEST(ProductIdentity, PackageVariableDecidesWhoOwnsTheProduct) {
    const ProductIdentity owned = identityOf(match({{"package", "pkg:deb/debian/x@1"}}));
    EXPECT_EQ(Packaging::Owned, owned.packaging);
    EXPECT_EQ("deb x", packageText(owned));
    const ProductIdentity free = identityOf(match({{"package", ""}}, kPackageEvidence));
    EXPECT_EQ(Packaging::NotOwned, free.packaging);
    EXPECT_EQ("none", packageText(free));
}

TEST(ProductIdentity, WithoutThatVariablePackageEvidenceDecides) {
    const ProductIdentity owned = identityOf(match({}, kPackageEvidence));
    EXPECT_EQ(Packaging::Owned, owned.packaging);
    EXPECT_EQ("x", packageText(owned));
    const ProductIdentity unreported = identityOf(match({}, "<Evidence kind=\"file\" source=\"/x\"/>"));
    EXPECT_EQ(Packaging::Unreported, unreported.packaging);
    EXPECT_EQ("unknown", packageText(unreported));
}

TEST(ProductIdentity, LanguagePackageNamesItsEcosystemUnlessASystemPackageOwnsIt) {
    const MatchedSignature alone = match({{"package", ""}, {"purl", "pkg:npm/left-pad@1"}});
    EXPECT_TRUE(isLanguagePackage(alone));
    EXPECT_EQ("npm", packageText(identityOf(alone)));
    const MatchedSignature owned =
        match({{"package", "pkg:deb/debian/node-left-pad@1"}, {"purl", "pkg:npm/left-pad@1"}});
    EXPECT_TRUE(isLanguagePackage(owned));
    EXPECT_EQ("deb node-left-pad", packageText(identityOf(owned)));
    EXPECT_FALSE(isLanguagePackage(match({}, "<Purl>pkg:npm/npm@11</Purl>")));
    EXPECT_FALSE(isLanguagePackage(match({{"purl", "pkg:deb/debian/x@1"}})));
}

TEST(ProductIdentity, IdentityComesFromVariablesElseFromMetadata) {
    const char* const metadata =
        "<Publisher>P</Publisher><Home>https://x</Home><Cpe>cpe:2.3:a:p:x:1</Cpe><Purl>pkg:generic/x@1</"
        "Purl>";
    const ProductIdentity identity = identityOf(match({{"version", "1"}}, metadata));
    EXPECT_EQ("X", identity.name);
    EXPECT_EQ("1", identity.version);
    EXPECT_EQ("P", identity.publisher);
    EXPECT_EQ("https://x", identity.home);
    EXPECT_EQ("cpe:2.3:a:p:x:1", identity.cpe);
    EXPECT_EQ("pkg:generic/x@1", identity.purl);
    const ProductIdentity other = identityOf(match({{"cpe", "c"}, {"purl", "p"}}, metadata));
    EXPECT_EQ("c", other.cpe);
    EXPECT_EQ("p", other.purl);
    EXPECT_EQ("https://y", identityOf(match({}, "<Homepage>https://y</Homepage>")).home);
}

TEST(ProductIdentity, NameIsTheProductElseTheMatchElseTheIdentifier) {
    EXPECT_EQ("corepack", identityOf(match({{"product", "corepack"}})).name);
    MatchedSignature nameless = match({});
    nameless.name.clear();
    EXPECT_EQ("zav.x", identityOf(nameless).name);
}

}  // namespace
}  // namespace zavcli
