#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/scan/HardwareScan.h"
#include "cli/scan/LibraryHandle.h"
#include "cli/scan/LocationFile.h"
#include "cli/scan/SignatureEvaluation.h"
#include "cli/scan/Toolkit.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"
#include "cli/system/PathTrust.h"
#include "cli/system/StandardStreams.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

enum class Verdict { Ok, Note, Problem };

struct Check {
    Verdict verdict = Verdict::Ok;
    std::string subject;
    std::string finding;  // the result, and what to do about it
};

Check checkLocationFile(const LocationFile& location) {
    const std::string subject = "configuration";
    if (!location.readable) {
        std::error_code error;
        if (std::filesystem::exists(kLocationFile, error))
            return {Verdict::Note, subject,
                    fmt::format("{} cannot be read; make it readable for all users", kLocationFile)};
        return {Verdict::Note, subject,
                fmt::format(
                    "there is no {}: no toolkit is installed for all programs, and none is needed if this "
                    "command has its own",
                    kLocationFile)};
    }
    std::ifstream lines(kLocationFile);
    const std::vector<std::string> faults = locationFileFaults(lines);
    if (faults.empty())
        return {Verdict::Ok, subject, fmt::format("{} names {}", kLocationFile, location.toolkit)};
    return {Verdict::Note, subject, fmt::format("{}: {}", kLocationFile, fmt::join(faults, "; "))};
}

Check checkRegistration(const LocationFile& location) {
    if (location.registered)
        return {Verdict::Ok, "registration", fmt::format("'{}' is a registered product", kProductName)};
    return {Verdict::Note, "registration",
            fmt::format("'{}' is not registered, which is optional; to register it, add it to the line "
                        "'ZAV_Exploiters = {}' of {}, separated from other names by ':'",
                        kProductName, kProductName, kLocationFile)};
}

Check checkTemporaryDirectory(std::optional<Workspace>& workspace) {
    const std::string subject = "temporary files";
    try {
        workspace.emplace();
        return {Verdict::Ok, subject,
                fmt::format("{} was created, and is removed when the check ends", workspace->path())};
    } catch (const Failure& failure) {
        return {Verdict::Problem, subject, failure.what()};
    }
}

std::string origin(ToolkitSource source) {
    switch (source) {
        case ToolkitSource::Given:
            return "given with --toolkit";
        case ToolkitSource::Configured:
            return fmt::format("named by {}", kLocationFile);
        case ToolkitSource::Bundled:
            return "bundled with this command";
    }
    return "";
}

// Scans one cheap group.
Check tryHardwareScanner(const Toolkit& toolkit, const Workspace& workspace) {
    const std::string scanner = scannerPath(toolkit.directory, kHardwareScanner);
    try {
        LibraryHandle library(nullptr, workspace, toolkit.directory);
        scanGroups(library, toolkit.directory, {kScanInfo});
        return {Verdict::Ok, "hardware scanner", fmt::format("{} ran and wrote a valid inventory", scanner)};
    } catch (const Failure& failure) {
        return {Verdict::Problem, "hardware scanner",
                fmt::format("{}; 'zav hw -vv' shows every step of a scan", failure.what())};
    }
}

// Evaluates no signatures.
Check trySoftwareScanner(const Toolkit& toolkit, const Workspace& workspace) {
    const std::string scanner = scannerPath(toolkit.directory, kSoftwareScanner);
    try {
        LibraryHandle library(nullptr, workspace, toolkit.directory);
        evaluateNothing(library, scanner);
        return {Verdict::Ok, "software scanner", fmt::format("{} ran and wrote valid results", scanner)};
    } catch (const Failure& failure) {
        return {Verdict::Problem, "software scanner",
                fmt::format("{}; 'zav sw FILE -vv' shows every step of an evaluation", failure.what())};
    }
}

class ToolkitExamination {
  public:
    ToolkitExamination(const ToolkitCandidates& candidates, const Workspace* workspace)
        : candidates_(candidates), workspace_(workspace) {}

    std::vector<Check> run() {
        addHardware();
        addSoftware();
        for (const Weakness& weakness : findWeaknesses(kLocationFile, PathKind::File, {geteuid()}))
            addWeakness(weakness, Verdict::Note);
        if (trusted_)
            checks_.push_back({Verdict::Ok, "ownership",
                               "no other user can replace the scanners or the file that names the toolkit"});
        return std::move(checks_);
    }

  private:
    void addHardware() {
        try {
            const Toolkit toolkit = chooseToolkit(candidates_, kHardwareScanner);
            const bool skipped = !candidates_.configured.empty() && toolkit.source == ToolkitSource::Bundled;
            checks_.push_back(
                {skipped ? Verdict::Note : Verdict::Ok, "toolkit directory",
                 fmt::format("{} ({}){}", toolkit.directory, origin(toolkit.source),
                             skipped ? fmt::format("; the configured {} has no usable 'quorvah'",
                                                   candidates_.configured)
                                     : "")});
            if (mayStart(toolkit, kHardwareScanner))
                checks_.push_back(tryHardwareScanner(toolkit, *workspace_));
        } catch (const Failure& failure) {
            checks_.push_back({Verdict::Problem, "toolkit directory", failure.what()});
        }
    }

    void addSoftware() {
        try {
            const Toolkit toolkit = chooseToolkit(candidates_, kSoftwareScanner);
            if (mayStart(toolkit, kSoftwareScanner))
                checks_.push_back(trySoftwareScanner(toolkit, *workspace_));
        } catch (const Failure& failure) {
            checks_.push_back(
                {Verdict::Note, "software scanner",
                 fmt::format(
                     "{}; this is needed to evaluate software signatures, not for a hardware inventory",
                     failure.what())});
        }
    }

    bool mayStart(const Toolkit& toolkit, const Scanner& scanner) {
        const std::vector<Weakness> weaknesses = findWeaknesses(toolkit, scanner);
        const bool refused = geteuid() == 0 && !weaknesses.empty();
        for (const Weakness& weakness : weaknesses)
            addWeakness(weakness, refused ? Verdict::Problem : Verdict::Note);
        return workspace_ != nullptr && !refused;
    }

    // The paths of both scanners are mostly the same, so each weakness is reported once.
    void addWeakness(const Weakness& weakness, Verdict verdict) {
        trusted_ = false;
        const std::string finding = describe({weakness});
        const bool known = std::any_of(checks_.begin(), checks_.end(),
                                       [&](const Check& check) { return check.finding == finding; });
        if (!known) checks_.push_back({verdict, "ownership", finding});
    }

    const ToolkitCandidates& candidates_;
    const Workspace* workspace_;
    std::vector<Check> checks_;
    bool trusted_ = true;
};

std::string_view verdictWord(Verdict verdict) {
    switch (verdict) {
        case Verdict::Ok:
            return "ok";
        case Verdict::Note:
            return "note";
        case Verdict::Problem:
            return "problem";
    }
    return "";
}

// `toolkit` is the directory that was given on the command line.
std::vector<Check> examine(const std::optional<std::string>& toolkit) {
    const LocationFile location = readLocationFile(kLocationFile, kProductName);
    std::optional<Workspace> workspace;
    std::vector<Check> checks{checkLocationFile(location), checkRegistration(location),
                              checkTemporaryDirectory(workspace)};
    const ToolkitCandidates candidates{toolkit, location.toolkit, bundledDirectories(commandPath())};
    const std::vector<Check> others = ToolkitExamination(candidates, workspace ? &*workspace : nullptr).run();
    checks.insert(checks.end(), others.begin(), others.end());
    return checks;
}

// One line per check.
std::string checkLines(const std::vector<Check>& checks) {
    std::string lines;
    for (const Check& check : checks)
        lines += fmt::format("{:<8} {}: {}\n", verdictWord(check.verdict), check.subject,
                             printable(check.finding));
    return lines;
}

bool hasProblem(const std::vector<Check>& checks) {
    return std::any_of(checks.begin(), checks.end(),
                       [](const Check& check) { return check.verdict == Verdict::Problem; });
}

}  // namespace

int runDoctor(const Options& options) {
    const std::vector<Check> checks = examine(options.toolkit);
    writeStandardOutput(checkLines(checks));
    return hasProblem(checks) ? kExitFailed : EXIT_SUCCESS;
}

}  // namespace zavcli
