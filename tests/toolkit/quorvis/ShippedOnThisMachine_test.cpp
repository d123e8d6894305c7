// Compares the results of the shipped signatures on this machine with the output of its own tools. Software that is not
// installed is skipped.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <regex>

#include "tests/support/Program.h"
#include "tests/toolkit/quorvis/ScannerRun.h"

namespace quorvistest {

namespace {

std::string outputOf(const std::string& command) {
    const zavtest::Finished run = zavtest::runProgram("/bin/sh", {"-c", command}, {"LC_ALL=C"});
    return run.status == 0 ? run.output + run.errors : std::string();
}

// The text of the first group of the expression; empty if it does not match.
std::string partOf(const std::string& text, const std::string& expression) {
    std::smatch match;
    return std::regex_search(text, match, std::regex(expression)) ? match[1].str() : std::string();
}

std::string valueOf(const FoundSoftware& software, const std::string& name) {
    for (const auto& [variable, value] : software.variables) {
        if (variable == name) return value;
    }
    return {};
}

// Whether one version is equal to the other or a prefix of it: "8.6.13" of "8.6.13+dfsg".
bool begins(const std::string& version, const std::string& start) {
    return version.starts_with(start) &&
           (version.size() == start.size() ||
            std::isdigit(static_cast<unsigned char>(version[start.size()])) == 0);
}

struct Tool {
    const char* guid;
    const char* file;        // with the signature
    const char* command;     // "@path" stands for the value of a variable
    const char* expression;  // of its version in what the command puts out

    friend void PrintTo(const Tool& tool, std::ostream* out) { *out << tool.guid; }
};

constexpr Tool kTools[] = {
    {"zav.os", "debian", ". /etc/os-release; echo \"$VERSION_ID\"", "(.+)"},
    {"zav.bash", "debian", "/usr/bin/bash --version", "version ([0-9.]+)"},
    {"zav.zsh", "debian", "/usr/bin/zsh --version", "zsh ([0-9.]+)"},
    {"zav.python", "debian", "/usr/bin/python3 --version", "Python ([0-9.]+)"},
    {"zav.perl", "debian", "/usr/bin/perl -v", "\\(v([0-9.]+)\\)"},
    {"zav.ruby", "debian", "/usr/bin/ruby --version", "ruby ([0-9.]+)"},
    {"zav.php", "debian", "/usr/bin/php --version", "PHP ([0-9.]+)"},
    {"zav.nodejs", "debian", "/usr/bin/node --version", "v([0-9.]+)"},
    {"zav.tcl", "debian", "echo 'puts [info patchlevel]' | /usr/bin/tclsh", "([0-9.]+)"},
    {"zav.postgresql", "debian", "@path --version", "PostgreSQL\\) ([0-9.]+)"},
    {"zav.sqlite", "debian", "/usr/bin/sqlite3 --version", "^([0-9.]+)"},
    {"zav.redis", "debian", "/usr/bin/redis-server --version", "v=([0-9.]+)"},
    {"zav.nginx", "debian", "@path -v", "nginx/([0-9.]+)"},
    {"zav.gcc", "debian", "/usr/bin/gcc -dumpfullversion", "([0-9.]+)"},
    {"zav.clang", "debian", "/usr/bin/clang --version", "version ([0-9.]+)"},
    {"zav.cmake", "debian", "/usr/bin/cmake --version", "version ([0-9.]+)"},
    {"zav.git", "debian", "/usr/bin/git --version", "version ([0-9.]+)"},
    {"zav.glibc", "debian", "ldd --version", " ([0-9.]+)\n"},
    {"zav.openssl", "debian", "/usr/bin/openssl version", "Library: OpenSSL ([0-9.]+[a-z]?)"},
    {"zav.systemd", "debian", "/usr/bin/systemctl --version", "\\(([0-9.]+)"},
    {"zav.apt", "../../share/zav/signatures/package-managers", "/usr/bin/apt --version", "apt ([0-9.]+)"},
    {"zav.dpkg", "../../share/zav/signatures/package-managers", "/usr/bin/dpkg --version",
     "version ([0-9.]+)"},
    {"zav.docker.cli", "debian", "@path --version", "version ([0-9.]+)"},
    {"zav.java", "java", "@home/bin/java -version 2>&1", "version \"([^\"]+)\""},
    {"zav.maven", "java", "@home/bin/mvn --version", "Maven ([0-9.]+)"},
    {"zav.python.copy", "toolchains", "@path --version 2>&1", "Python ([0-9.]+)"},
    {"zav.nodejs.copy", "toolchains", "@path --version", "v([0-9.]+)"},
    {"zav.go", "toolchains", "@path version", "go([0-9.]+)"},
    {"zav.rust.toolchain", "toolchains", "@path/bin/rustc --version", "rustc ([^ ]+)"},
    {"zav.npm", "language-packages", "node @path/bin/npm-cli.js --version", "([0-9.]+)"},
};

// Empty if the match has no such variable: software from a package is found without its path.
std::string withValues(std::string command, const FoundSoftware& software) {
    std::smatch match;
    while (std::regex_search(command, match, std::regex("@([a-z]+)"))) {
        const std::string value = valueOf(software, match[1]);
        if (value.empty()) return {};
        command = match.prefix().str() + value + match.suffix().str();
    }
    return command;
}

class ShippedOnThisMachine : public testing::TestWithParam<Tool> {
  protected:
    std::vector<FoundSoftware> found_;
    void SetUp() override {
        const Tool& tool = GetParam();
        const ScannerRun run =
            runScanner(std::string(QUORVIS_SIGNATURES "/") + tool.file + ".xml", std::string());
        const auto [begin, end] = run.found.equal_range(tool.guid);
        for (auto entry = begin; entry != end; ++entry) found_.push_back(entry->second);
    }
};

TEST_P(ShippedOnThisMachine, HasTheVersionThatTheProgramPrints) {
    const Tool& tool = GetParam();
    const std::string command = tool.command;
    if (command.find('@') != std::string::npos) {
        int compared = 0;
        for (const FoundSoftware& software : found_) {
            const std::string asked = withValues(command, software);
            if (asked.empty()) continue;
            ++compared;
            EXPECT_EQ(valueOf(software, "version"), partOf(outputOf(asked), tool.expression)) << asked;
        }
        if (compared == 0) GTEST_SKIP() << "this machine has nothing to compare with by: " << command;
        return;
    }
    const std::string version = partOf(outputOf(command), tool.expression);
    if (version.empty()) GTEST_SKIP() << "this machine has nothing to compare with by: " << command;
    const auto isIt = [&version](const FoundSoftware& software) {
        return begins(valueOf(software, "version"), version);
    };
    EXPECT_TRUE(std::ranges::any_of(found_, isIt)) << "the program tells " << version;
}

INSTANTIATE_TEST_SUITE_P(Live, ShippedOnThisMachine, testing::ValuesIn(kTools), [](const auto& given) {
    std::string name = given.param.guid + std::string("zav.").size();
    std::ranges::replace(name, '.', '_');
    return name;
});

std::string decoded(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            plain += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

TEST(ShippedOnThisMachineDpkg, ListsTheSamePackages) {
    int packages = 0;
    for (const auto& [guid, software] : runScanner(QUORVIS_SIGNATURES "/debian.xml", "").found) {
        std::smatch url;
        const std::string text = valueOf(software, "package");
        if (!std::regex_match(text, url, std::regex("pkg:deb/[^/]*/([^@]*)@([^?]*)\\?arch=[^&]*"))) continue;
        ++packages;
        const std::string expected = "ii " + decoded(url[2]) + "\n";
        const std::string command = "dpkg-query -W -f '${db:Status-Abbrev}${Version}\\n' " + decoded(url[1]);
        EXPECT_NE(outputOf(command).find(expected), std::string::npos) << guid << ": " << text;
    }
    // Every machine with dpkg has bash and perl-base.
    EXPECT_GE(packages, 2);
}

}  // namespace

}  // namespace quorvistest
