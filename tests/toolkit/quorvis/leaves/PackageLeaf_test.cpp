#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {
namespace {

using A = Attribute;

constexpr char kStatus[] = "var/lib/dpkg/status";

std::string stanza(const std::string& name, const std::string& version,
                   const std::string& architecture = "amd64", const std::string& more = "") {
    return "Package: " + name + "\nStatus: install ok installed\nArchitecture: " + architecture +
           "\nVersion: " + version + "\n" + more + "\n";
}

class PackageLeaf : public testing::Test {
  protected:
    using Attributes = std::vector<std::pair<Attribute, std::string>>;

    // Uses the context of the previous lookup, if any.
    LeafResult lookUp(Attributes attributes) {
        if (!context_) {
            root_.emplace(tree_.path());
            context_.emplace(*root_, settings_);
        }
        std::ranges::sort(attributes);
        Leaf leaf;
        leaf.kind = LeafKind::Package;
        std::vector<std::string> values;
        for (const auto& [attribute, value] : attributes) {
            leaf.attributes.push_back({attribute, Template()});
            values.push_back(value);
        }
        return lookUpPackage(Query(leaf, values), *context_);
    }

    // "name version arch" of each item.
    std::vector<std::string> found(Attributes attributes) {
        const LeafResult result = lookUp(std::move(attributes));
        EXPECT_FALSE(result.incomplete);
        EXPECT_TRUE(result.events.empty());
        return rowsOf(result);
    }

    static std::vector<std::string> rowsOf(const LeafResult& result) {
        std::vector<std::string> rows;
        for (const Item& item : result.items) {
            rows.push_back(*item.find("name") + " " + *item.find("version") + " " + *item.find("arch"));
        }
        return rows;
    }

    zavtest::ScratchDir tree_;
    Settings settings_;
    std::optional<Root> root_;
    std::optional<EvaluationContext> context_;
};

using Rows = std::vector<std::string>;

TEST_F(PackageLeaf, AnItemHasAllItsValues) {
    tree_.write("etc/os-release", "ID=debian\n");
    tree_.write(kStatus, stanza("bash", "2:5.2.15-2+b8", "amd64", "Source: bash-src (5.2.15-2)\n"));
    const LeafResult result = lookUp({{A::Name, "bash"}});
    ASSERT_EQ(1U, result.items.size());
    const Item& item = result.items.front();
    const std::pair<const char*, const char*> kValues[] = {
        {"name", "bash"},
        {"version", "2:5.2.15-2+b8"},
        {"epoch", "2"},
        {"upstream", "5.2.15"},
        {"release", "2+b8"},
        {"arch", "amd64"},
        {"type", "dpkg"},
        {"source", "bash-src"},
        {"purl", "pkg:deb/debian/bash@2:5.2.15-2%2Bb8?arch=amd64"},
    };
    EXPECT_EQ(std::size(kValues), item.fields.size());
    for (const auto& [name, value] : kValues) {
        ASSERT_NE(nullptr, item.find(name)) << name;
        EXPECT_EQ(value, *item.find(name)) << name;
    }
    EXPECT_EQ("/var/lib/dpkg/status", item.source);
}

TEST_F(PackageLeaf, ItemsAreSortedByNameVersionAndArchitecture) {
    tree_.write(kStatus,
                stanza("b", "1") + stanza("a", "2", "i386") + stanza("a", "2", "amd64") + stanza("ab", "0"));
    tree_.write("lib/apk/db/installed", "P:a\nV:1-r0\nA:x86\n\n");
    EXPECT_EQ((Rows{"a 1-r0 x86", "a 2 amd64", "a 2 i386"}), found({{A::Name, "a"}}));
    EXPECT_EQ((Rows{"a 1-r0 x86", "a 2 amd64", "a 2 i386", "ab 0 amd64", "b 1 amd64"}),
              found({{A::NameRegex, ""}}));
}

TEST_F(PackageLeaf, OnlyInstalledPackagesWithExactlyThisNameAreFound) {
    tree_.write(kStatus,
                stanza("bash-doc", "1") + "Package: bash\nStatus: deinstall ok config-files\nVersion: 1\n\n");
    EXPECT_EQ(Rows(), found({{A::Name, "bash"}}));
    EXPECT_EQ(Rows(), found({{A::Name, ""}}));
    EXPECT_EQ(Rows(), found({{A::Name, "zz"}}));
}

TEST_F(PackageLeaf, ARegexMayMatchAnywhereInTheName) {
    tree_.write(kStatus, stanza("a", "1") + stanza("g++", "1") + stanza("lib32z1", "1") +
                             stanza("libz1", "1") + stanza("libz10", "1") + stanza("python3.11", "1") +
                             stanza("z1", "1"));
    EXPECT_EQ((Rows{"lib32z1 1 amd64", "libz1 1 amd64", "libz10 1 amd64", "z1 1 amd64"}),
              found({{A::NameRegex, "z1"}}));
    EXPECT_EQ((Rows{"libz1 1 amd64", "libz10 1 amd64"}), found({{A::NameRegex, "^libz"}}));
    EXPECT_EQ((Rows{"libz1 1 amd64"}), found({{A::NameRegex, "^libz[0-9]$"}}));
    EXPECT_EQ((Rows{"lib32z1 1 amd64", "libz1 1 amd64", "z1 1 amd64"}),
              found({{A::NameRegex, "^(lib(32)?)?z1$"}}));
    EXPECT_EQ((Rows{"libz1 1 amd64", "libz10 1 amd64"}), found({{A::NameRegex, "^libz10?"}}));
    EXPECT_EQ((Rows{"libz1 1 amd64", "libz10 1 amd64"}), found({{A::NameRegex, "^libz10*$"}}));
    EXPECT_EQ((Rows{"libz1 1 amd64"}), found({{A::NameRegex, "^libz10{0}$"}}));
    EXPECT_EQ((Rows{"lib32z1 1 amd64", "z1 1 amd64"}), found({{A::NameRegex, "^z1|32"}}));
    EXPECT_EQ((Rows{"g++ 1 amd64"}), found({{A::NameRegex, "^g\\+\\+$"}}));
    EXPECT_EQ((Rows{"g++ 1 amd64", "python3.11 1 amd64"}), found({{A::NameRegex, "^g|^python3\\.1"}}));
    EXPECT_EQ((Rows{"python3.11 1 amd64"}), found({{A::NameRegex, "^python3\\.1+$"}}));
    EXPECT_EQ((Rows{"a 1 amd64"}), found({{A::NameRegex, "(?i)^A$"}}));
    EXPECT_EQ(Rows(), found({{A::NameRegex, "^x"}}));
}

TEST_F(PackageLeaf, AnnouncedRegexesFindTheSameAsSingleOnes) {
    tree_.write(kStatus, stanza("a", "1") + stanza("g++", "1") + stanza("lib32z1", "1") +
                             stanza("libz1", "1") + stanza("libz1", "1", "i386") + stanza("libz10", "1"));
    const std::vector<std::string> regexes = {
        "",         "z1",     "^libz",     "^libz[0-9]$", "^(lib(32)?)?z1$",
        "^libz10?", "^z1|32", "^g\\+\\+$", "\\d\\d",      "^x"};
    std::vector<Rows> alone;
    for (const std::string& regex : regexes) alone.push_back(found({{A::NameRegex, regex}}));
    for (const std::string& regex : regexes) context_->packages().announce(regex);
    for (std::size_t i = 0; i < regexes.size(); ++i) {
        EXPECT_EQ(alone[i], found({{A::NameRegex, regexes[i]}})) << regexes[i];
        EXPECT_NE(nullptr, context_->packages().announced(regexes[i])) << regexes[i];
    }
    EXPECT_EQ(nullptr, context_->packages().announced("^li"));
}

TEST_F(PackageLeaf, AFewAnnouncedRegexesAreMatchedAlone) {
    tree_.write(kStatus, stanza("a", "1") + stanza("b", "1"));
    EXPECT_EQ((Rows{"a 1 amd64"}), found({{A::NameRegex, "^a"}}));
    for (const char* const regex : {"^a", "^b", "^c", "^a"}) context_->packages().announce(regex);
    EXPECT_EQ(nullptr, context_->packages().announced("^a"));
    EXPECT_EQ((Rows{"b 1 amd64"}), found({{A::NameRegex, "^b"}}));
}

TEST_F(PackageLeaf, ThousandsOfRegexesAreAnnounced) {
    tree_.write(kStatus, stanza("a7", "1") + stanza("a1500", "1") + stanza("b1500", "1"));
    EXPECT_EQ((Rows{"a7 1 amd64"}), found({{A::NameRegex, "7"}}));
    for (int i = 0; i < 2500; ++i) context_->packages().announce(std::to_string(i) + "$");
    EXPECT_EQ((Rows{"a7 1 amd64"}), found({{A::NameRegex, "7$"}}));
    EXPECT_EQ((Rows{"a1500 1 amd64", "b1500 1 amd64"}), found({{A::NameRegex, "1500$"}}));
    EXPECT_EQ(Rows(), found({{A::NameRegex, "2499$"}}));
    EXPECT_NE(nullptr, context_->packages().announced("2499$"));
}

TEST_F(PackageLeaf, TypeArchitectureAndSourceSelect) {
    tree_.write(kStatus, stanza("a", "1", "amd64", "Source: s\n") + stanza("a", "1", "i386"));
    tree_.write("lib/apk/db/installed", "P:a\nV:2-r0\nA:x86\n\n");
    EXPECT_EQ(3U, found({{A::Name, "a"}, {A::Type, "any"}}).size());
    EXPECT_EQ((Rows{"a 2-r0 x86"}), found({{A::Name, "a"}, {A::Type, "apk"}}));
    EXPECT_EQ(Rows(), found({{A::Name, "a"}, {A::Type, "rpm"}}));
    EXPECT_EQ((Rows{"a 1 i386"}), found({{A::Name, "a"}, {A::Arch, "i386"}}));
    EXPECT_EQ((Rows{"a 1 amd64"}), found({{A::Name, "a"}, {A::Source, "s"}}));
}

TEST_F(PackageLeaf, VersionsAreComparedLikeThePackageManagerDoes) {
    tree_.write(kStatus, stanza("a", "1:2.0~rc1-1"));
    tree_.write("lib/apk/db/installed", "P:b\nV:1.10-r3\n\n");
    tree_.write("var/lib/pacman/local/c-1/desc", "%NAME%\nc\n\n%VERSION%\n1:1.3-2\n");
    const struct {
        Attributes attributes;
        bool passes;
    } kCases[] = {
        {{{A::Name, "a"}, {A::AtLeast, "1:2.0"}}, false},
        {{{A::Name, "a"}, {A::Above, "1:1.9"}, {A::Below, "1:2.0"}}, true},
        {{{A::Name, "a"}, {A::Above, "9"}}, true},
        {{{A::Name, "a"}, {A::Above, "9"}, {A::Compare, "upstream"}}, false},
        {{{A::Name, "a"}, {A::Equals, "2.0~rc1"}, {A::Compare, "upstream"}}, true},
        {{{A::Name, "a"}, {A::Equals, "2.0.RC.1"}, {A::Compare, "upstream"}, {A::Scheme, "dotted"}}, true},
        {{{A::Name, "b"}, {A::Above, "1.9"}}, true},
        {{{A::Name, "b"}, {A::Equals, "1.10"}}, true},
        {{{A::Name, "b"}, {A::Above, "1.10-r2"}, {A::AtMost, "1.10-r3"}}, true},
        {{{A::Name, "c"}, {A::AtLeast, "2"}}, true},
        {{{A::Name, "c"}, {A::AtLeast, "2"}, {A::Compare, "upstream"}}, false},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(test.passes ? 1U : 0U, found(test.attributes).size())
            << testing::PrintToString(&test - kCases);
    }
}

TEST_F(PackageLeaf, AVersionThatCannotBeComparedLeavesTheLeafIncomplete) {
    tree_.write(kStatus, stanza("a", "1 2"));
    const LeafResult result = lookUp({{A::Name, "a"}, {A::AtLeast, "1"}});
    EXPECT_TRUE(result.items.empty());
    EXPECT_TRUE(result.incomplete);
    ASSERT_EQ(1U, result.events.size());
    EXPECT_EQ("/var/lib/dpkg/status", result.events.front().path);
    EXPECT_EQ((Rows{"a 1 2 amd64"}), found({{A::Name, "a"}}));
}

TEST_F(PackageLeaf, InvalidKeywordsFail) {
    for (const auto& [attribute, value] : Attributes{
             {A::Type, "zip"}, {A::Compare, "downstream"}, {A::NameRegex, "("}, {A::Scheme, "roman"}}) {
        Attributes attributes{{attribute, value}, {A::AtLeast, "1"}};
        if (attribute != A::NameRegex) attributes.emplace_back(A::Name, "a");
        tree_.write(kStatus, stanza("a", "1"));
        const LeafResult result = lookUp(attributes);
        EXPECT_TRUE(result.incomplete) << value;
        ASSERT_EQ(1U, result.events.size()) << value;
        EXPECT_EQ(EventCode::Unsupported, result.events.front().code) << value;
    }
}

TEST_F(PackageLeaf, AMachineWithoutDatabasesHasNoPackages) {
    EXPECT_EQ(Rows(), found({{A::Name, "bash"}}));
    EXPECT_EQ(Rows(), found({{A::NameRegex, "^b"}}));
}

TEST_F(PackageLeaf, ADamagedDatabaseIsUsedAndReportedOnce) {
    tree_.write(kStatus, stanza("a", "1") + "Package: b\nStat");
    tree_.write("lib/apk/db/installed", "P:c\nV:1-r0\n\n");
    const LeafResult first = lookUp({{A::Name, "b"}});
    EXPECT_TRUE(first.items.empty());
    EXPECT_TRUE(first.incomplete);
    ASSERT_EQ(1U, first.events.size());
    EXPECT_EQ(EventCode::Parse, first.events.front().code);
    EXPECT_EQ("/var/lib/dpkg/status", first.events.front().path);
    EXPECT_NE(std::string::npos, first.events.front().text.find("from byte 87 on"))
        << first.events.front().text;
    const LeafResult second = lookUp({{A::Name, "a"}});
    EXPECT_EQ(Rows{"a 1 amd64"}, rowsOf(second));
    EXPECT_TRUE(second.incomplete);
    EXPECT_TRUE(second.events.empty());
    EXPECT_EQ(Rows{"c 1-r0 "}, found({{A::Name, "c"}, {A::Type, "apk"}}));
}

TEST_F(PackageLeaf, AnUnreadableDatabaseLeavesTheLeafIncomplete) {
    tree_.write("var/lib/rpm/Packages", "old");
    const LeafResult old = lookUp({{A::Name, "a"}, {A::Type, "rpm"}});
    EXPECT_TRUE(old.incomplete);
    ASSERT_EQ(1U, old.events.size());
    EXPECT_EQ("/var/lib/rpm/Packages", old.events.front().path);
    EXPECT_EQ(Rows(), found({{A::Name, "a"}, {A::Type, "dpkg"}}));
}

TEST_F(PackageLeaf, AForbiddenDatabaseLeavesTheLeafIncomplete) {
    const auto file = tree_.write(kStatus, stanza("a", "1"));
    std::filesystem::permissions(file, std::filesystem::perms::none);
    std::filesystem::permissions(tree_.path(), std::filesystem::perms::all);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);  // root may read everything
        const LeafResult result = lookUp({{A::Name, "a"}});
        EXPECT_TRUE(result.incomplete);
        EXPECT_TRUE(result.events.size() == 1 && result.events.front().code == EventCode::Permission);
        _exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST_F(PackageLeaf, TheSettingsSayWhichDatabasesAreRead) {
    tree_.write(kStatus, stanza("a", "1"));
    tree_.write("lib/apk/db/installed", "P:a\nV:2-r0\n\n");
    tree_.write("srv/installed", "P:a\nV:3-r0\n\n");
    settings_.packages.types = {"apk"};
    EXPECT_EQ(Rows{"a 2-r0 "}, found({{A::Name, "a"}}));
    context_.reset();
    settings_.packages.database = "/srv/installed";
    EXPECT_EQ(Rows{"a 3-r0 "}, found({{A::Name, "a"}}));
}

}  // namespace
}  // namespace toolkit::quorvis
