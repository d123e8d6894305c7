#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "cli/commands/Commands.h"
#include "cli/commands/ScanSetup.h"
#include "cli/commands/Scans.h"
#include "cli/scan/ErrorMessages.h"
#include "cli/scan/EvaluationOptions.h"
#include "cli/scan/LogPrinter.h"
#include "cli/scan/SoftwareResults.h"
#include "cli/scan/Workspace.h"
#include "cli/suggest/Draft.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxPrograms = 4;

// The path without links, as it is below the scanned directory.
std::string pathInTree(const Options& options) {
    std::error_code error;
    if (options.root) {
        const std::filesystem::path path = "/" / std::filesystem::path(*options.suggest).relative_path();
        return path.lexically_normal().string();
    }
    std::string path = std::filesystem::canonical(*options.suggest, error).string();
    if (error)
        throw Failure(kExitBadUsage, fmt::format("--suggest: '{}': {}", *options.suggest, error.message()));
    return path;
}

class Explorer {
  public:
    explicit Explorer(const Options& options)
        : toolkit_(selectToolkit(options, kSoftwareScanner)),
          progress_(false),
          printer_(options.verbosity, toolkit_.source, progress_),
          root_(passScannedRoot(options, kSoftwareScanner)),
          library_(&printer_, workspace_, toolkit_.directory) {}

    void explore(Findings& findings, const std::string& signatures) {
        const int code = ZAV_sw_evaluate(library_.software(), fromUtf8(signatures).c_str());
        if (code != ZAV_SUCCESS)
            throw Failure(kExitFailed, fmt::format("{} ({})", errorMessage(code),
                                                   scannerPath(toolkit_.directory, kSoftwareScanner)));
        addFindings(findings, readMatches(library_.software(), {}, {}));
    }

  private:
    Toolkit toolkit_;
    ProgressBar progress_;
    LogPrinter printer_;
    std::string root_;
    Workspace workspace_;
    LibraryHandle library_;
};

// Programs that are named like the directory come first.
void putNamedFirst(std::vector<std::string>& programs, const std::string& product) {
    std::stable_partition(programs.begin(), programs.end(), [&](const std::string& program) {
        return lowerCase(productNameOf(program)) == lowerCase(product);
    });
    programs.resize(std::min(kMaxPrograms, programs.size()));
}

}  // namespace

int runSuggestion(const Options& options) {
    DraftSubject subject;
    subject.path = pathInTree(options);
    subject.product = productNameOf(subject.path);
    InventoryOutput output(options);
    const std::filesystem::path onDisk = options.root ? *options.root + subject.path : subject.path;
    std::error_code error;
    Findings findings;
    Explorer explorer(options);
    if (std::filesystem::is_directory(onDisk, error)) {
        explorer.explore(findings, signaturesForDirectory(subject.path));
        putNamedFirst(findings.programs, subject.product);
        for (const std::string& program : findings.programs)
            explorer.explore(findings, signaturesForFile(program, productNameOf(program)));
    } else if (std::filesystem::exists(onDisk, error)) {
        explorer.explore(findings, signaturesForFile(subject.path, subject.product));
    } else {
        throw Failure(kExitBadUsage,
                      fmt::format("--suggest: '{}': No such file or directory", onDisk.string()));
    }
    explorer.explore(findings, signatureForPackages(subject.product));
    output.write(draftText(subject, findings));
    return EXIT_SUCCESS;
}

}  // namespace zavcli
