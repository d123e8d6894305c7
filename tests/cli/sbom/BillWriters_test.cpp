// A bill of materials in both formats.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "cli/sbom/BillWriter.h"
#include "tests/cli/sbom/SampleBill.h"

namespace zavcli {
namespace {

using Json = nlohmann::ordered_json;

BillOfMaterials sample() {
    BillOfMaterials bill = makeBill(zavtest::sampleSystem(), zavtest::sampleSoftware());
    bill.files = {{"/usr/sbin/nginx", {"a1", "b2"}}};
    return bill;
}

Json cycloneDx(const BillOfMaterials& bill) {
    return Json::parse(cycloneDxText(bill, {}));
}

Json spdx(const BillOfMaterials& bill) {
    return Json::parse(spdxText(bill, {}));
}

Json named(const Json& list, const char* name) {
    for (const Json& item : list) {
        if (item.value("name", "") == name) return item;
    }
    return {};
}

TEST(CycloneDxWriter, DocumentDescribesTheSystem) {
    const Json json = cycloneDx(sample());
    EXPECT_EQ("CycloneDX", json.at("bomFormat"));
    EXPECT_EQ("1.6", json.at("specVersion"));
    EXPECT_EQ("operating-system", json.at("metadata").at("component").at("type"));
    EXPECT_EQ("debian", json.at("metadata").at("component").at("name"));
    EXPECT_FALSE(json.contains("compositions"));
}

TEST(CycloneDxWriter, PackageContainsItsProductsAndTheirFiles) {
    const Json package = named(cycloneDx(sample()).at("components"), "nginx-core");
    EXPECT_EQ("library", package.at("type"));
    EXPECT_EQ("A Team (x)", package.at("supplier").at("name"));
    const Json nginx = package.at("components").at(0);
    EXPECT_EQ("application", nginx.at("type"));
    EXPECT_EQ("cpe:2.3:a:f5:nginx:1.22.1:*:*:*:*:*:*:*", nginx.at("cpe"));
    EXPECT_EQ("/usr/sbin/nginx", nginx.at("evidence").at("occurrences").at(0).at("location"));
    EXPECT_EQ(
        (Json{{"type", "file"},
              {"name", "/usr/sbin/nginx"},
              {"hashes", {{{"alg", "SHA-1"}, {"content", "a1"}}, {{"alg", "SHA-256"}, {"content", "b2"}}}}}),
        nginx.at("components").at(0));
}

TEST(CycloneDxWriter, LanguagePackageHasAGroupAndAllItsPlaces) {
    const Json package = named(cycloneDx(sample()).at("components"), "left-pad");
    EXPECT_EQ("@scope", package.at("group"));
    EXPECT_EQ("pkg:npm/%40scope/left-pad@1.3.0", package.at("purl"));
    EXPECT_EQ(2U, package.at("evidence").at("occurrences").size());
}

TEST(CycloneDxWriter, SystemDependsOnEveryComponentAtTheTop) {
    const Json json = cycloneDx(sample());
    std::set<std::string> references;
    for (const Json& component : json.at("components")) references.insert(component.at("bom-ref"));
    const Json dependencies = json.at("dependencies");
    ASSERT_EQ(1U, dependencies.size());
    EXPECT_EQ(json.at("metadata").at("component").at("bom-ref"), dependencies.at(0).at("ref"));
    EXPECT_EQ(references, dependencies.at(0).at("dependsOn").get<std::set<std::string>>());
}

TEST(CycloneDxWriter, IncompleteBillSaysSo) {
    BillOfMaterials bill = sample();
    bill.complete = false;
    EXPECT_EQ("incomplete", cycloneDx(bill).at("compositions").at(0).at("aggregate"));
}

TEST(CycloneDxWriter, OnlyAChosenTimeIsWritten) {
    EXPECT_FALSE(cycloneDx(sample()).at("metadata").contains("timestamp"));
    const Json json = Json::parse(cycloneDxText(sample(), {1000000000, true}));
    EXPECT_EQ("2001-09-09T01:46:40Z", json.at("metadata").at("timestamp"));
    EXPECT_EQ(cycloneDx(sample()).at("serialNumber"), json.at("serialNumber"));
}

TEST(CycloneDxWriter, SerialNumberFollowsTheContent) {
    BillOfMaterials other = sample();
    other.components.front().version += "1";
    EXPECT_NE(cycloneDx(sample()).at("serialNumber"), cycloneDx(other).at("serialNumber"));
    EXPECT_EQ(0U, cycloneDx(other).at("serialNumber").get<std::string>().find("urn:uuid:"));
}

TEST(SpdxWriter, DocumentDescribesTheSystem) {
    const Json json = spdx(sample());
    EXPECT_EQ("SPDX-2.3", json.at("spdxVersion"));
    EXPECT_EQ("CC0-1.0", json.at("dataLicense"));
    EXPECT_EQ("debian-12", json.at("name"));
    EXPECT_EQ("1970-01-01T00:00:00Z", json.at("creationInfo").at("created"));
    EXPECT_EQ("OPERATING_SYSTEM", json.at("packages").at(0).at("primaryPackagePurpose"));
    EXPECT_EQ((Json{{"spdxElementId", "SPDXRef-DOCUMENT"},
                    {"relationshipType", "DESCRIBES"},
                    {"relatedSpdxElement", json.at("packages").at(0).at("SPDXID")}}),
              json.at("relationships").at(0));
}

TEST(SpdxWriter, PackageContainsItsProducts) {
    const Json json = spdx(sample());
    const Json package = named(json.at("packages"), "nginx-core");
    const Json nginx = named(json.at("packages"), "nginx");
    EXPECT_EQ("Organization: A Team [x]", package.at("supplier"));
    EXPECT_EQ("cpe23Type", nginx.at("externalRefs").at(0).at("referenceType"));
    EXPECT_EQ("found in /usr/sbin/nginx (elf 1.22.1)", nginx.at("sourceInfo"));
    const Json contains = {{"spdxElementId", package.at("SPDXID")},
                           {"relationshipType", "CONTAINS"},
                           {"relatedSpdxElement", nginx.at("SPDXID")}};
    const Json& relationships = json.at("relationships");
    EXPECT_NE(relationships.end(), std::find(relationships.begin(), relationships.end(), contains));
}

// A program in a package, and a module in the program.
BillOfMaterials nested() {
    BillOfMaterials bill = sample();
    Component program;
    program.kind = ComponentKind::LanguagePackage;
    program.purl = "pkg:golang/a/tool@v1";
    program.name = "a/tool";
    program.owner = "pkg:deb/debian/nginx-core@1.22.1-9?arch=amd64";
    program.id = program.purl + " in " + program.owner;
    Component module = program;
    module.purl = "pkg:golang/x/sys@v1";
    module.name = "x/sys";
    module.owner = program.id;
    module.id = module.purl + " in " + module.owner;
    bill.components.push_back(program);
    bill.components.push_back(module);
    return bill;
}

TEST(CycloneDxWriter, ProgramContainsItsModules) {
    const Json package = named(cycloneDx(nested()).at("components"), "nginx-core");
    const Json program = named(package.at("components"), "tool");
    EXPECT_EQ("pkg:golang/x/sys@v1", named(program.at("components"), "sys").at("purl"));
}

TEST(SpdxWriter, ProgramContainsItsModules) {
    const Json json = spdx(nested());
    const auto id = [&json](const char* name) { return named(json.at("packages"), name).at("SPDXID"); };
    for (const auto& [from, to] : {std::pair{"nginx-core", "a/tool"}, std::pair{"a/tool", "x/sys"}}) {
        const Json contains = {
            {"spdxElementId", id(from)}, {"relationshipType", "CONTAINS"}, {"relatedSpdxElement", id(to)}};
        const Json& relationships = json.at("relationships");
        EXPECT_EQ(1, std::count(relationships.begin(), relationships.end(), contains)) << from;
    }
}

TEST(SpdxWriter, FilesHaveBothHashesAndTellWhatTheyProve) {
    const Json json = spdx(sample());
    ASSERT_EQ(1U, json.at("files").size());
    const Json file = json.at("files").at(0);
    EXPECT_EQ("./usr/sbin/nginx", file.at("fileName"));
    EXPECT_EQ("SHA1", file.at("checksums").at(0).at("algorithm"));
    EXPECT_EQ(1, std::count_if(json.at("relationships").begin(), json.at("relationships").end(),
                               [&](const Json& relationship) {
                                   return relationship.at("spdxElementId") == file.at("SPDXID") &&
                                          relationship.at("relationshipType") == "OTHER";
                               }));
    BillOfMaterials bill = sample();
    bill.files.clear();
    EXPECT_FALSE(spdx(bill).contains("files"));
}

TEST(SpdxWriter, IdentifiersAreUniqueAndPlain) {
    BillOfMaterials bill = sample();
    Component twin = bill.components.front();
    twin.id += "+";
    twin.name = "gr\xc3\xb6\xc3\x9f _/" + std::string(300, 'x');
    bill.components.push_back(twin);
    std::set<std::string> identifiers;
    const Json json = spdx(bill);
    for (const Json& package : json.at("packages")) {
        const std::string id = package.at("SPDXID");
        EXPECT_TRUE(identifiers.insert(id).second) << id;
        EXPECT_EQ(0U, id.find("SPDXRef-"));
        EXPECT_EQ(std::string::npos,
                  id.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-"))
            << id;
        EXPECT_LT(id.size(), 128U);
    }
}

TEST(SpdxWriter, NamespaceFollowsTheContentAndNotTheTime) {
    const Json later = Json::parse(spdxText(sample(), {1000000000, false}));
    EXPECT_EQ(spdx(sample()).at("documentNamespace"), later.at("documentNamespace"));
    BillOfMaterials other = sample();
    other.components.front().version += "1";
    EXPECT_NE(spdx(sample()).at("documentNamespace"), spdx(other).at("documentNamespace"));
}

TEST(BillWriters, HostileValuesAreLeftOutOrReplaced) {
    BillOfMaterials bill = sample();
    for (Component& component : bill.components) {
        component.cpe = "cpe:2.3:a:x";
        component.purl = "pkg:npm/a b";
        component.home = "javascript:alert(1)";
        component.description = "\xff\xfe\x01";
        component.supplier = "a\n\"b\"\\";
    }
    const Json document = cycloneDx(bill);
    for (const Json& component : document.at("components"))
        EXPECT_FALSE(component.contains("cpe") || component.contains("purl") ||
                     component.contains("externalReferences"));
    const Json json = spdx(bill);
    for (std::size_t i = 1; i < json.at("packages").size(); ++i) {
        const Json& package = json.at("packages").at(i);
        EXPECT_FALSE(package.contains("externalRefs") || package.contains("homepage"));
        EXPECT_EQ("Organization: a 'b'/", package.at("supplier"));
        EXPECT_EQ("\xef\xbf\xbd\xef\xbf\xbd\x01", package.at("summary").get<std::string>());
    }
}

}  // namespace
}  // namespace zavcli
