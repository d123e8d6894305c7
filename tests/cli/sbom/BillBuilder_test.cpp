#include "cli/sbom/BillBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/cli/sbom/SampleBill.h"

namespace zavcli {
namespace {

const Component* find(const BillOfMaterials& bill, const std::string& name) {
    const auto found = std::find_if(bill.components.begin(), bill.components.end(),
                                    [&](const Component& component) { return component.name == name; });
    return found == bill.components.end() ? nullptr : &*found;
}

BillOfMaterials sample() {
    return makeBill(zavtest::sampleSystem(), zavtest::sampleSoftware());
}

TEST(BillBuilder, SystemIsTheOperatingSystemWithoutWhatChanges) {
    const Component system = sample().system;
    EXPECT_EQ("debian", system.name);
    EXPECT_EQ("12", system.version);
    EXPECT_EQ("Debian GNU/Linux 12 (bookworm)", system.description);
    for (const Field& property : system.properties) EXPECT_EQ(std::string::npos, property.value.find("2026"));
    EXPECT_EQ("unknown", makeBill({}, {}).system.name);
}

TEST(BillBuilder, OnlyInstalledPackagesAreComponents) {
    const BillOfMaterials bill = sample();
    const Component* const package = find(bill, "nginx-core");
    ASSERT_NE(nullptr, package);
    EXPECT_EQ(ComponentKind::SystemPackage, package->kind);
    EXPECT_EQ("pkg:deb/debian/nginx-core@1.22.1-9?arch=amd64", package->purl);
    EXPECT_EQ(nullptr, find(bill, "old"));
}

TEST(BillBuilder, ProductOfAPackageIsOwnedByIt) {
    const BillOfMaterials bill = sample();
    const Component* const nginx = find(bill, "nginx");
    ASSERT_NE(nullptr, nginx);
    EXPECT_EQ(ComponentKind::Product, nginx->kind);
    EXPECT_EQ(find(bill, "nginx-core")->id, nginx->owner);
    EXPECT_EQ("F5", nginx->supplier);
    EXPECT_EQ("https://nginx.org/", nginx->home);
    ASSERT_EQ(1U, nginx->occurrences.size()) << "the package database is not a part of the product";
    EXPECT_EQ("/usr/sbin/nginx", nginx->occurrences[0].path);
    EXPECT_EQ("elf 1.22.1", nginx->occurrences[0].detail);
    EXPECT_EQ("", find(bill, "tool")->owner);
}

TEST(BillBuilder, PackageThatIsNotInstalledOwnsNothing) {
    SoftwareInventory software = zavtest::sampleSoftware();
    for (MatchedSignature& match : software.results) {
        for (Field& variable : match.variables) {
            if (variable.name == "package" && !variable.value.empty())
                variable.value = "pkg:deb/debian/nginx-core@2";
        }
    }
    EXPECT_EQ("", find(makeBill(zavtest::sampleSystem(), software), "nginx")->owner);
}

TEST(BillBuilder, SameLanguagePackageAtSeveralPlacesIsOneComponent) {
    const BillOfMaterials bill = sample();
    EXPECT_EQ(1,
              std::count_if(bill.components.begin(), bill.components.end(), [](const Component& component) {
                  return component.kind == ComponentKind::LanguagePackage;
              }));
    const Component* const package = find(bill, "@scope/left-pad");
    ASSERT_NE(nullptr, package);
    EXPECT_EQ("1.3.0", package->version);
    ASSERT_EQ(2U, package->occurrences.size());
    EXPECT_EQ("/srv/a/package.json", package->occurrences[0].path);
    EXPECT_EQ("/srv/b/package.json", package->occurrences[1].path);
}

// A result of a signature that lists packages. `container` is empty for what the file itself is.
MatchedSignature packageResult(const char* guid, const std::string& purl, const std::string& place,
                               const std::string& container, const std::string& package = "") {
    std::vector<Field> variables = {{"package", package}, {"path", place}, {"version", "1"}};
    if (!purl.empty()) variables.push_back({"purl", purl});
    if (!container.empty()) variables.push_back({"container", container});
    const std::string file = place.substr(0, place.find("!/"));
    return zavtest::sampleMatch(guid, place.c_str(), variables,
                                R"(<Evidence kind="component" source=")" + file + R"(" name="x"/>)");
}

std::string ownerNamed(const BillOfMaterials& bill, const std::string& id) {
    for (const Component& component : bill.components) {
        if (component.id == id) return component.owner;
    }
    return "no such component";
}

TEST(BillBuilder, ModulesOfAProgramAreContainedInIt) {
    const std::string owner = "pkg:deb/debian/nginx-core@1.22.1-9?arch=amd64";
    SoftwareInventory software;
    software.results = {
        packageResult("go", "pkg:golang/x/sys@v1", "/usr/bin/tool", "/usr/bin/tool", owner),
        packageResult("go", "pkg:golang/a/tool@v1", "/usr/bin/tool", "", owner),
        packageResult("go", "pkg:golang/x/sys@v1", "/opt/other", "/opt/other"),
        packageResult("go", "pkg:golang/a/other@v1", "/opt/other", ""),
        packageResult("rust", "pkg:cargo/lone@1", "/opt/other", "/opt/other"),
    };
    const BillOfMaterials bill = makeBill(zavtest::sampleSystem(), software);
    const std::string tool = "pkg:golang/a/tool@v1 in " + owner;
    EXPECT_EQ(owner, ownerNamed(bill, tool));
    EXPECT_EQ(tool, ownerNamed(bill, "pkg:golang/x/sys@v1 in " + tool));
    EXPECT_EQ("", ownerNamed(bill, "pkg:golang/a/other@v1"));
    EXPECT_EQ("pkg:golang/a/other@v1", ownerNamed(bill, "pkg:golang/x/sys@v1 in pkg:golang/a/other@v1"));
    EXPECT_EQ("", ownerNamed(bill, "pkg:cargo/lone@1")) << "the signature found no container";
}

TEST(BillBuilder, ArchivesAreContainedInTheArchivesAroundThem) {
    SoftwareInventory software;
    software.results = {
        packageResult("java", "", "/opt/a.ear", ""),
        packageResult("java", "pkg:maven/g/b@1", "/opt/a.ear!/b.war", "/opt/a.ear"),
        packageResult("java", "pkg:maven/g/unpacked@1", "/opt/a.ear!/b.war", "/opt/a.ear!/b.war"),
        packageResult("java", "pkg:maven/g/c@1", "/opt/a.ear!/b.war!/c.jar", "/opt/a.ear!/b.war"),
    };
    const BillOfMaterials bill = makeBill(zavtest::sampleSystem(), software);
    const std::string ear = "java@1:/opt/a.ear";
    const std::string war = "pkg:maven/g/b@1 in " + ear;
    EXPECT_EQ("", ownerNamed(bill, ear));
    EXPECT_EQ(ear, ownerNamed(bill, war));
    EXPECT_EQ(war, ownerNamed(bill, "pkg:maven/g/unpacked@1 in " + war));
    EXPECT_EQ(war, ownerNamed(bill, "pkg:maven/g/c@1 in " + war));
    const Component* const jar = find(bill, "g/c");
    ASSERT_NE(nullptr, jar);
    EXPECT_EQ((std::vector<Occurrence>{{"/opt/a.ear", "component x at b.war!/c.jar"}}), jar->occurrences);
}

TEST(BillBuilder, ContainersThatContainEachOtherEndSomewhere) {
    SoftwareInventory software;
    software.results = {
        packageResult("g", "pkg:npm/a@1", "/a", "/b"),
        packageResult("g", "pkg:npm/b@1", "/b", "/a"),
        packageResult("g", "pkg:npm/self@1", "/self", "/self"),
    };
    const BillOfMaterials bill = makeBill({}, software);
    ASSERT_EQ(3U, bill.components.size());
    EXPECT_EQ("", find(bill, "self")->owner);
    EXPECT_NE(find(bill, "a")->owner.empty(), find(bill, "b")->owner.empty());
}

TEST(BillBuilder, FileOfTheOperatingSystemIsNoProduct) {
    EXPECT_EQ(nullptr, find(sample(), "Operating system"));
}

TEST(BillBuilder, OrderOfTheResultsDoesNotMatter) {
    SoftwareInventory reversed = zavtest::sampleSoftware();
    std::reverse(reversed.results.begin(), reversed.results.end());
    HardwareInventory hardware = zavtest::sampleSystem();
    std::reverse(hardware.groups[1].instances.begin(), hardware.groups[1].instances.end());
    const BillOfMaterials one = sample();
    const BillOfMaterials other = makeBill(hardware, reversed);
    ASSERT_EQ(one.components.size(), other.components.size());
    for (std::size_t i = 0; i < one.components.size(); ++i) {
        EXPECT_EQ(one.components[i].id, other.components[i].id);
        EXPECT_EQ(one.components[i].occurrences, other.components[i].occurrences);
    }
}

TEST(BillBuilder, BillIsIncompleteIfSomethingWasNotRead) {
    EXPECT_TRUE(sample().complete);
    HardwareInventory hardware = zavtest::sampleSystem();
    hardware.groups[1].status = {GroupState::Partial, "dpkg-broken"};
    EXPECT_FALSE(makeBill(hardware, zavtest::sampleSoftware()).complete);
    hardware.groups[1].status = {GroupState::NotApplicable, "no-database"};
    EXPECT_TRUE(makeBill(hardware, zavtest::sampleSoftware()).complete);
    SoftwareInventory software = zavtest::sampleSoftware();
    software.complete = false;
    EXPECT_FALSE(makeBill(hardware, software).complete);
}

TEST(BillBuilder, EvidentFilesAreThoseOfAllComponents) {
    EXPECT_EQ(
        (std::set<std::string>{"/opt/tool", "/srv/a/package.json", "/srv/b/package.json", "/usr/sbin/nginx"}),
        evidentFiles(sample()));
}

}  // namespace
}  // namespace zavcli
