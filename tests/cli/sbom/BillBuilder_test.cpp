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
