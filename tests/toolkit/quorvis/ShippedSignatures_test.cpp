// Evaluates the signatures in examples/signatures on machines with their software, and on machines with similar software.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <regex>
#include <set>

#include "tests/support/Program.h"
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

// The names of the signature files without extension.
std::vector<std::string> shippedFiles() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(QUORVIS_SIGNATURES))
        names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

std::string signaturesIn(const std::string& name) {
    return QUORVIS_SIGNATURES "/" + name + ".xml";
}

std::vector<ShippedSignature> treesFor(const std::string& name) {
    return readShippedTrees(QUORVIS_SHIPPED "/" + name + ".txt");
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (const std::string& name : shippedFiles()) {
        for (ShippedSignature& signature : treesFor(name))
            cases.push_back({signaturesIn(name), std::move(signature)});
    }
    return cases;
}

// Runs a copy of `sleep` under another name until destruction.
class RunningProgram {
  public:
    explicit RunningProgram(const fs::path& path) {
        fs::copy_file("/usr/bin/sleep", path);
        // The other end is closed when the child executes the program.
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
        child_ = fork();
        if (child_ == 0) {
            execl(path.c_str(), path.c_str(), "300", nullptr);
            _exit(127);
        }
        close(ends[1]);
        char none = 0;
        while (read(ends[0], &none, 1) == -1 && errno == EINTR) continue;
        close(ends[0]);
    }
    ~RunningProgram() {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

  private:
    pid_t child_ = -1;
};

// One line per match, so that differences are easy to see.
std::string textOf(const FoundSoftware& software) {
    std::string text = software.name + "\n";
    for (const auto& [name, value] : software.variables)
        text.append("  ").append(name).append(" = ").append(value).append("\n");
    return text;
}

std::string textOf(const std::vector<FoundSoftware>& all) {
    std::string text;
    for (const FoundSoftware& software : all) text += textOf(software);
    return text;
}

std::vector<FoundSoftware> foundBy(const std::string& guid, const ScannerRun& run) {
    std::vector<FoundSoftware> found;
    const auto [begin, end] = run.found.equal_range(guid);
    for (auto entry = begin; entry != end; ++entry) found.push_back(entry->second);
    return found;
}

void checkTree(const Case& c, const ShippedTree& tree) {
    const zavtest::ScratchDir root;
    plantTree(tree, root.path());
    const ScannerRun run = runScanner(c.file, root.path().string());
    EXPECT_EQ(textOf(foundBy(c.signature.guid, run)), textOf(tree.found));
    EXPECT_EQ(run.eventsOf(c.signature.guid), tree.events);
}

// Scans the machine itself, which may also run other instances of the program.
void checkRunning(const Case& c, const ShippedTree& tree) {
    const zavtest::ScratchDir dir;
    const fs::path program = fs::canonical(dir.path()) / tree.running();
    const RunningProgram running(program);
    const std::vector<FoundSoftware> found = foundBy(c.signature.guid, runScanner(c.file, ""));
    for (const FoundSoftware& software : found) {
        const auto isProgram = [&tree](const auto& variable) {
            return variable.first == "path" && fs::path(variable.second).filename() == tree.running();
        };
        EXPECT_TRUE(std::ranges::any_of(software.variables, isProgram)) << textOf(software);
    }
    for (FoundSoftware expected : tree.found) {
        expected.variables.emplace_back("path", program.string());
        expected.variables.emplace_back("user", getpwuid(geteuid())->pw_name);
        EXPECT_TRUE(std::ranges::find(found, expected) != found.end()) << textOf(expected) << textOf(found);
    }
}

class ShippedSignatureTest : public testing::TestWithParam<Case> {};

TEST_P(ShippedSignatureTest, FindsOnlyItsSoftware) {
    const auto finds = [](const ShippedTree& tree) { return !tree.found.empty(); };
    const std::vector<ShippedTree>& trees = GetParam().signature.trees;
    EXPECT_TRUE(std::ranges::any_of(trees, finds)) << "no tree has the software";
    EXPECT_FALSE(std::ranges::all_of(trees, finds)) << "each tree has the software";
    for (const ShippedTree& tree : trees) {
        SCOPED_TRACE(tree.title);
        if (tree.running().empty())
            checkTree(GetParam(), tree);
        else
            checkRunning(GetParam(), tree);
    }
}

INSTANTIATE_TEST_SUITE_P(Shipped, ShippedSignatureTest, testing::ValuesIn(allCases()), [](const auto& given) {
    std::string name = given.param.signature.guid.substr(std::string("zav.").size());
    std::ranges::replace_if(
        name, [](char c) { return c == '.' || c == '-'; }, '_');
    return name;
});

class ShippedFile : public testing::TestWithParam<std::string> {};

TEST_P(ShippedFile, HasTreesForEachOfItsSignatures) {
    const std::string text = zavtest::readAll(signaturesIn(GetParam()));
    const std::regex expression("<Signature guid=\"([^\"]*)\"");
    std::set<std::string> guids;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
        EXPECT_TRUE(guids.insert((*match)[1]).second) << "twice: " << (*match)[1];
    std::set<std::string> covered;
    for (const ShippedSignature& signature : treesFor(GetParam())) covered.insert(signature.guid);
    EXPECT_FALSE(guids.empty());
    EXPECT_EQ(covered, guids);
}

TEST_P(ShippedFile, IsValidWithoutWarnings) {
    const zavtest::Finished run =
        zavtest::runProgram(QUORVIS_PROGRAM, {"--check", "-i", signaturesIn(GetParam())});
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output.find("(warning)"), std::string::npos) << run.output;
}

TEST_P(ShippedFile, IsValidAccordingToTheSchema) {
    const zavtest::Finished run = zavtest::runProgram(
        "/usr/bin/xmllint", {"--noout", "--nonet", "--schema", QUORVIS_SCHEMA, signaturesIn(GetParam())});
    EXPECT_EQ(run.status, 0) << run.errors;
}

TEST_P(ShippedFile, FindsNothingOnAnEmptyMachine) {
    const zavtest::ScratchDir root;
    const ScannerRun run = runScanner(signaturesIn(GetParam()), root.path().string());
    EXPECT_TRUE(run.found.empty());
}

INSTANTIATE_TEST_SUITE_P(Shipped, ShippedFile, testing::ValuesIn(shippedFiles()), [](const auto& given) {
    std::string name = given.param;
    std::ranges::replace(name, '-', '_');
    return name;
});

TEST(SignatureReference, ContainsOnlyValidSignatures) {
    const std::string text = zavtest::readAll(QUORVIS_REFERENCE);
    const zavtest::ScratchDir dir;
    int examples = 0;
    const std::string begin = "```xml\n";
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1)) {
        const std::size_t start = at + begin.size();
        std::string example = text.substr(start, text.find("```", start) - start);
        if (!example.starts_with("<Signature")) continue;
        ++examples;
        if (!example.starts_with("<Signatures>")) example = "<Signatures>" + example + "</Signatures>";
        const zavtest::Finished run = zavtest::runProgram(
            QUORVIS_PROGRAM, {"--check", "-i", dir.write("example.xml", example).string()});
        EXPECT_EQ(run.status, 0) << run.output << example;
        EXPECT_EQ(run.output.find("(warning)"), std::string::npos) << run.output << example;
    }
    EXPECT_GE(examples, 10);
}

TEST(ShippedFiles, HaveUniqueIdentifiers) {
    std::set<std::string> guids;
    for (const Case& c : allCases()) EXPECT_TRUE(guids.insert(c.signature.guid).second) << c.signature.guid;
}

}  // namespace

}  // namespace quorvistest
