// Evaluates signatures in share/zav/signatures on machines with software that the software laboratory cannot get.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvis/ScannerRun.h"
#include "tests/toolkit/quorvis/ShippedTrees.h"

namespace quorvistest {

namespace {

namespace fs = std::filesystem;

struct Case {
    std::string file;  // with its signatures
    ShippedSignature signature;

    friend void PrintTo(const Case& c, std::ostream* out) { *out << c.signature.guid; }
};

std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (const auto& entry : fs::directory_iterator(QUORVIS_CATALOGUE_TREES)) {
        const std::string file = QUORVIS_CATALOGUE "/" + entry.path().stem().string() + ".xml";
        for (ShippedSignature& signature : readShippedTrees(entry.path())) cases.push_back({file, signature});
    }
    std::ranges::sort(cases, {}, [](const Case& c) { return c.signature.guid; });
    return cases;
}

// Without empty variables, such as the package of a file that no package manager knows.
std::string textOf(const FoundSoftware& software) {
    std::string text = software.name + "\n";
    for (const auto& [name, value] : software.variables) {
        if (!value.empty()) text.append("  ").append(name).append(" = ").append(value).append("\n");
    }
    return text;
}

class CatalogueSignature : public testing::TestWithParam<Case> {};

TEST_P(CatalogueSignature, FindsOnlyItsSoftware) {
    const auto& [file, signature] = GetParam();
    for (const ShippedTree& tree : signature.trees) {
        SCOPED_TRACE(tree.title);
        const zavtest::ScratchDir root;
        plantTree(tree, root.path());
        const ScannerRun run = runScannerOnWholeTree(file, root.path().string());
        std::string found;
        const auto [begin, end] = run.found.equal_range(signature.guid);
        for (auto entry = begin; entry != end; ++entry) found += textOf(entry->second);
        std::string expected;
        for (const FoundSoftware& software : tree.found) expected += textOf(software);
        EXPECT_EQ(found, expected);
        EXPECT_EQ(run.eventsOf(signature.guid), tree.events);
    }
}

TEST_P(CatalogueSignature, HasTreesWithAndWithoutItsSoftware) {
    const auto finds = [](const ShippedTree& tree) { return !tree.found.empty(); };
    const std::vector<ShippedTree>& trees = GetParam().signature.trees;
    EXPECT_TRUE(std::ranges::any_of(trees, finds));
    EXPECT_FALSE(std::ranges::all_of(trees, finds));
}

INSTANTIATE_TEST_SUITE_P(Catalogue, CatalogueSignature, testing::ValuesIn(allCases()), [](const auto& given) {
    std::string name = given.param.signature.guid.substr(std::string("zav.").size());
    std::ranges::replace_if(
        name, [](char c) { return c == '.' || c == '-'; }, '_');
    return name;
});

}  // namespace

}  // namespace quorvistest
