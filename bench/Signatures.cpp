#include "bench/Signatures.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

#include "bench/FileTree.h"
#include "bench/Measuring.h"
#include "bench/MixedSignatures.h"
#include "bench/PackageSignatures.h"
#include "bench/Process.h"

namespace zavbench {

namespace {

using std::filesystem::path;

std::size_t countOf(std::string_view text, std::string_view wanted) {
    std::size_t count = 0;
    for (std::size_t at = text.find(wanted); at != std::string_view::npos; at = text.find(wanted, at + 1)) {
        ++count;
    }
    return count;
}

std::string contentOf(const path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The input and output files of the scanner for one signatures file.
struct Scan {
    Scan(const path& scratch, const std::string& name)
        : signatures(scratch / (name + "-signatures.xml")),
          output(scratch / (name + "-output.xml")),
          command{besideThis("quorvis"),
                  "-c",
                  scratch / "signatures-config.xml",
                  "-o",
                  output,
                  "-e",
                  scratch / (name + "-warnings.xml"),
                  "-i",
                  signatures} {
        std::ofstream(scratch / "signatures-config.xml") << "<Configuration></Configuration>\n";
    }

    std::size_t matches() const {
        return runProcess(command, true).status == 0 ? countOf(contentOf(output), "<MatchedSignature ") : 0;
    }

    path signatures;
    path output;
    std::vector<std::string> command;
};

// Figures are comparable only if both programs get the same results.
void mustBe(std::size_t found, std::size_t wanted, const std::string& what) {
    if (found == wanted && found != 0) return;
    std::cerr << "zav_bench: " << what << ": " << found << " instead of " << wanted << '\n';
    std::exit(1);
}

// Removing the package lists leaves OpenSCAP's package reader little to load.
void hidePackageLists(const path& scratch) {
    const path lists = scratch / "lists";
    const path configuration = scratch / "apt.conf";
    std::filesystem::create_directories(lists / "partial");
    std::ofstream(configuration) << "Dir::State::lists \"" << lists.string() << "/\";\n"
                                 << "Dir::Cache::pkgcache \"\";\nDir::Cache::srcpkgcache \"\";\n";
    ::setenv("APT_CONFIG", configuration.c_str(), 1);
}

void addPackages(const path& scratch) {
    hidePackageLists(scratch);
    const std::vector<std::string> names = packageNames(2'000);
    const std::vector<std::string> half(names.begin(), names.begin() + 1'000);
    const Scan first(scratch, "packages1000");
    const Scan second(scratch, "packages2000");
    writePackageSignatures(first.signatures, half);
    writePackageSignatures(second.signatures, names);
    const std::string definitions = scratch / "oval.xml";
    writeOvalDefinitions(definitions, half);
    const std::vector<std::string> oscap = {"oscap", "oval", "eval", "--skip-validation", definitions};
    mustBe(first.matches(), countOf(runProcess(oscap, true).output, ": true\n"), "packages found");
    measureProgram("packages1000", first.command, 10);
    measureProgram("packages2000", second.command, 10);
    measureProgram("oscap1000", oscap, 1);
}

void addMixed(const path& scratch) {
    constexpr int kSignatures = 5'000;
    constexpr int kPresent = 500;
    const FileTree tree = {scratch / "tree", 100'000, kPresent};
    makeFileTree(tree);
    Scan scan(scratch, "mixed");
    scan.command.insert(scan.command.end(), {"--root", tree.root});
    writeMixedSignatures(scan.signatures, kSignatures, kPresent, packageNames(kSignatures));
    std::cerr << "mixed signatures: " << scan.matches() << " match\n";
    measureProgram("mixed", scan.command, 3);
    measureProgram("walk", {besideThis("bare_walk"), tree.root}, 3);
}

}  // namespace

const std::vector<Row>& signatureRows() {
    static const std::vector<Row> rows = {
        {"quorvis, 1,000 package signatures / oscap, 1,000 dpkginfo tests, CPU", "packages1000", "oscap1000",
         1.0 / 30},
        {"quorvis, each further package signature, CPU", "signature", "", 0},
        {"quorvis, 5,000 mixed signatures, 100,000 files / a bare walk, time", "mixed/wall", "walk/wall",
         1.2},
        {"the same, CPU of both threads", "mixed", "walk", 0},
    };
    return rows;
}

void addSignatures(const path& scratch) {
    addPackages(scratch);
    addMixed(scratch);
}

void deriveSignatures(Medians& medians) {
    if (!medians.contains("packages1000") || !medians.contains("packages2000")) return;
    medians["signature"] = (medians["packages2000"] - medians["packages1000"]) / 1'000;
}

}  // namespace zavbench
