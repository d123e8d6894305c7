// Runs the signature scanner on hostile trees with hostile signatures.
#include <sys/stat.h>

#include <fstream>
#include <memory>
#include <sstream>

#include "fuzz/hostile/Harness.h"
#include "fuzz/hostile/HostileSignatures.h"
#include "fuzz/hostile/Mutations.h"
#include "tests/toolkit/quorvis/ArchiveBuilder.h"
#include "tests/toolkit/quorvis/ElfBuilder.h"
#include "tests/toolkit/quorvis/WindowsProgramBuilder.h"

namespace {

using hostile::Problem;
using hostile::Random;
namespace fs = std::filesystem;

const std::string kCanary = "CANARY-9d1c3f7a";
constexpr int kTimeLimit = 3;
// Sanitizers and other programs slow down the scan.
constexpr std::chrono::seconds kGrace{12};

std::string archive() {
    toolkit::quorvis::ArchiveBuilder builder;
    builder.add("META-INF/MANIFEST.MF",
                "Manifest-Version: 1.0\nImplementation-Version: 1.2\nBundle-Name: n\n\n");
    builder.add("META-INF/maven/g/a/pom.properties", "version=1.2\nartifactId=a\ngroupId=g\n");
    builder.add("zeros", std::string(std::size_t{4} << 20, '\0'));
    return builder.build();
}

// Well-formed files of all kinds that leaves read.
struct Seed {
    std::string path;
    std::string content;
};
std::vector<Seed> seeds() {
    const std::string json =
        R"({"name": "a", "version": "1.2", "packages": [{"name": "b"}], "dependencies": {"a": 1}})";
    return {
        {"/var/lib/dpkg/status",
         "Package: a\nStatus: install ok installed\nArchitecture: amd64\nVersion: 1:1.2-3\n\n"},
        {"/lib/apk/db/installed", "C:Q1\nP:a\nV:1.2-r0\nA:x86_64\no:a\n\n"},
        {"/var/lib/pacman/local/a-1.2-1/desc", "%NAME%\na\n\n%VERSION%\n1.2-1\n\n%ARCH%\nx86_64\n\n"},
        {"/var/lib/rpm/rpmdb.sqlite",
         std::string("SQLite format 3\0\x10\0\x01\x01\0\x40\x20\x20", 24) + std::string(8'168, '\1')},
        {"/etc/os-release", "NAME=\"a\"\nVERSION_ID='1.2'\nID=debian\n"},
        {"/etc/passwd", "root:x:0:0::/:/bin/sh\nu:x:1000:1000::/home/u:/bin/sh\n"},
        {"/home/u/a.json", json},
        {"/home/u/a.ini", "[s]\nname=a\nversion = 1.2\n"},
        {"/home/u/a.properties", "name=a\nversion: 1\\u002e2\\\n 3\n"},
        {"/home/u/a.xml", "<a><b c=\"1.2\">x</b><b>y</b></a>"},
        {"/home/u/METADATA", "Name: a\nVersion: 1.2\n\ntext\n"},
        {"/home/u/a.jar", archive()},
        {"/home/u/a.so", toolkit::quorvis::ElfBuilder().build()},
        {"/home/u/a.exe", toolkit::quorvis::WindowsProgramBuilder().build()},
        {"/usr/share/swidtag/a.swidtag",
         R"(<SoftwareIdentity name="Widget" tagId="t" version="1.2"><Entity name="n" regid="r" role="tagCreator"/></SoftwareIdentity>)"},
    };
}

std::string configuration(Random& random) {
    std::ostringstream text;
    text << R"(<Configuration><Plugin name="Evaluation"><Attribute name="timeLimit" value=")" << kTimeLimit
         << R"("/>)";
    text << R"(<Attribute name="jobs" value=")" << 1 + random.below(4) << R"("/></Plugin>)";
    text << R"(<Plugin name="FileSystem"><Attribute name="wholeTree" value="true"/>)";
    if (random.oneIn(4))
        text << R"(<Attribute name="maxDepth" value="64"/><Attribute name="maxMatches" value="100000"/>)";
    if (random.oneIn(4)) text << R"(<Attribute name="maxFileSize" value="128M"/>)";
    return text.str() + "</Plugin></Configuration>";
}

// Writes files beside the tree, whose content must not appear in the output.
void writeOutside(const fs::path& outside) {
    for (const char* const name : {"secret", "a.json", "name", "sub/secret"})
        hostile::write(outside / name, "name=" + kCanary + "\nversion=" + kCanary + "\n");
}

Problem checkEvents(const fs::path& warnings) {
    std::ostringstream text;
    text << std::ifstream(warnings, std::ios::binary).rdbuf();
    for (const char* const sign : {"it died of signal", "it ended with status"}) {
        if (text.str().find(sign) != std::string::npos)
            return "the evaluating process died:\n" + text.str().substr(0, 2000);
    }
    return {};
}

Problem runCaseIn(const std::string& scanner, Random& random, const fs::path& directory,
                  std::string& command) {
    const fs::path tree = directory / "tree";
    const fs::path outside = directory / "outside";
    writeOutside(outside);
    std::vector<std::string> paths;
    std::vector<fs::path> changing;
    for (const Seed& seed : seeds()) {
        const fs::path file = tree / seed.path.substr(1);
        hostile::putHostile(random, file, seed.content, outside / "secret");
        paths.push_back(seed.path);
        if (random.oneIn(6)) changing.push_back(file);
    }
    hostile::addOddDirectories(random, tree / "odd");
    std::error_code ignored;
    fs::create_directories(tree / "swap/sub", ignored);
    hostile::write(tree / "swap/secret", "name=value\n");

    std::string text = hostile::hostileSignatures(random, paths);
    const bool wrong = random.oneIn(6);
    if (wrong) text = hostile::mutatedText(random, std::move(text));
    const fs::path signatures = directory / "signatures.xml";
    hostile::write(signatures, text);
    std::string settings = configuration(random);
    if (!wrong && !random.oneIn(4))
        settings.insert(settings.find("</Plugin>"), R"(<Attribute name="onInvalid" value="skip"/>)");
    const fs::path config = directory / "config.xml";
    hostile::write(config, settings);
    const fs::path output = directory / "out.xml";
    const fs::path warnings = directory / "warnings.xml";

    std::unique_ptr<hostile::ChangingFiles> thread;
    if (random.oneIn(2)) thread = std::make_unique<hostile::ChangingFiles>(tree / "swap", outside, changing);
    const hostile::Run run =
        hostile::run(scanner, {"-c", config, "-o", output, "-e", warnings, "-i", signatures, "--root", tree},
                     directory, std::chrono::seconds(kTimeLimit) + kGrace);
    thread.reset();
    command = run.command;

    Problem problem = hostile::checkRun(run, {0, 3}, directory);
    if (problem.empty()) problem = hostile::checkOutput(output, kCanary);
    if (problem.empty()) problem = hostile::checkOutput(warnings, kCanary);
    if (problem.empty()) problem = checkEvents(warnings);
    if (problem.empty() && run.messages.find(kCanary) != std::string::npos)
        problem = "its messages contain content from outside the root";
    return problem;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    return hostile::runCases(argumentCount, arguments,
                             [](Random& random, const fs::path& directory, std::string& command) {
                                 return runCaseIn(QUORVIS_PROGRAM, random, directory, command);
                             });
}
