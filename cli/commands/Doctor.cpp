#include "cli/commands/Doctor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <optional>

#include "cli/scan/Configuration.h"
#include "cli/scan/Evaluation.h"
#include "cli/scan/Inventory.h"
#include "cli/scan/Library.h"
#include "cli/scan/Location.h"
#include "cli/scan/Toolkit.h"
#include "cli/scan/Workspace.h"
#include "cli/system/Failure.h"
#include "cli/system/Trust.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

class Silence : public Listener {
  public:
    void hear(const Message& /*message*/) noexcept override {}
};

Check checkConfiguration(const Location& location) {
    const std::string subject = "configuration";
    if (!location.readable) {
        std::error_code error;
        if (std::filesystem::exists(kConfigurationFile, error))
            return {Verdict::Note, subject,
                    fmt::format("{} cannot be read; allow it to all users", kConfigurationFile)};
        return {Verdict::Note, subject,
                fmt::format(
                    "there is no {}: no toolkit is installed for all programs, and none is needed when one "
                    "comes with this command",
                    kConfigurationFile)};
    }
    std::ifstream lines(kConfigurationFile);
    const std::vector<std::string> faults = configurationFaults(lines);
    if (faults.empty())
        return {Verdict::Ok, subject, fmt::format("{} names {}", kConfigurationFile, location.toolkit)};
    return {Verdict::Note, subject, fmt::format("{}: {}", kConfigurationFile, fmt::join(faults, "; "))};
}

Check checkRegistration(const Location& location) {
    if (location.registered)
        return {Verdict::Ok, "registration", fmt::format("'{}' is a registered product", kProductName)};
    return {
        Verdict::Note, "registration",
        fmt::format("'{}' is not registered, which does not hinder it; to register it, add it to the line "
                    "'ZAV_Exploiters = {}' of {}, names separated by ':'",
                    kProductName, kProductName, kConfigurationFile)};
}

Check checkTemporaryDirectory(std::optional<Workspace>& workspace) {
    const std::string subject = "temporary files";
    try {
        workspace.emplace();
        return {Verdict::Ok, subject,
                fmt::format("{} was made, and is removed at the end", workspace->path())};
    } catch (const Failure& failure) {
        return {Verdict::Problem, subject, failure.what()};
    }
}

std::string origin(ToolkitSource source) {
    switch (source) {
        case ToolkitSource::Given:
            return "given with --toolkit";
        case ToolkitSource::Configured:
            return fmt::format("named by {}", kConfigurationFile);
        case ToolkitSource::Bundled:
            return "came with this command";
    }
    return "";
}

// The library is opened on the toolkit and one cheap group is scanned.
Check tryHardwareScanner(const Toolkit& toolkit, const Workspace& workspace) {
    const std::string scanner = scannerPath(toolkit.directory, kHardwareScanner);
    try {
        Silence silence;
        Library library(silence, workspace, toolkit.directory);
        scanGroups(library, toolkit.directory, {kScanInfo});
        return {Verdict::Ok, "hardware scanner", fmt::format("{} ran and wrote a valid inventory", scanner)};
    } catch (const Failure& failure) {
        return {Verdict::Problem, "hardware scanner",
                fmt::format("{}; 'zav hw -vv' shows every step of a scan", failure.what())};
    }
}

// The library is opened on the toolkit and no signature at all is evaluated.
Check trySoftwareScanner(const Toolkit& toolkit, const Workspace& workspace) {
    const std::string scanner = scannerPath(toolkit.directory, kSoftwareScanner);
    try {
        Silence silence;
        Library library(silence, workspace, toolkit.directory);
        evaluateNothing(library, scanner);
        return {Verdict::Ok, "software scanner", fmt::format("{} ran and wrote valid results", scanner)};
    } catch (const Failure& failure) {
        return {Verdict::Problem, "software scanner",
                fmt::format("{}; 'zav sw FILE -vv' shows every step of an evaluation", failure.what())};
    }
}

class ToolkitExamination {
  public:
    ToolkitExamination(const ToolkitPlaces& places, const Workspace* workspace)
        : places_(places), workspace_(workspace) {}

    std::vector<Check> run() {
        addHardware();
        addSoftware();
        for (const Weakness& weakness : weaknessesOf(kConfigurationFile, Leads::ToFile, {geteuid()}))
            addWeakness(weakness, Verdict::Note);
        if (sound_)
            checks_.push_back({Verdict::Ok, "ownership",
                               "no other user can replace the scanners, or the file that names the toolkit"});
        return std::move(checks_);
    }

  private:
    void addHardware() {
        try {
            const Toolkit toolkit = chooseToolkit(places_, kHardwareScanner);
            const bool passedOver = !places_.configured.empty() && toolkit.source == ToolkitSource::Bundled;
            checks_.push_back(
                {passedOver ? Verdict::Note : Verdict::Ok, "toolkit directory",
                 fmt::format("{} ({}){}", toolkit.directory, origin(toolkit.source),
                             passedOver ? fmt::format("; the configured {} has no usable 'quorvah'",
                                                      places_.configured)
                                        : "")});
            if (mayStart(toolkit, kHardwareScanner))
                checks_.push_back(tryHardwareScanner(toolkit, *workspace_));
        } catch (const Failure& failure) {
            checks_.push_back({Verdict::Problem, "toolkit directory", failure.what()});
        }
    }

    void addSoftware() {
        try {
            const Toolkit toolkit = chooseToolkit(places_, kSoftwareScanner);
            if (mayStart(toolkit, kSoftwareScanner))
                checks_.push_back(trySoftwareScanner(toolkit, *workspace_));
        } catch (const Failure& failure) {
            checks_.push_back({Verdict::Note, "software scanner",
                               fmt::format("{}; software signatures cannot be evaluated, but a hardware "
                                           "inventory needs none",
                                           failure.what())});
        }
    }

    bool mayStart(const Toolkit& toolkit, const Scanner& scanner) {
        const std::vector<Weakness> weaknesses = weaknessesOf(toolkit, scanner);
        const bool refused = geteuid() == 0 && !weaknesses.empty();
        for (const Weakness& weakness : weaknesses)
            addWeakness(weakness, refused ? Verdict::Problem : Verdict::Note);
        return workspace_ != nullptr && !refused;
    }

    // Both scanners have most of their way in common.
    void addWeakness(const Weakness& weakness, Verdict verdict) {
        sound_ = false;
        const std::string finding = describe({weakness});
        const bool told = std::any_of(checks_.begin(), checks_.end(),
                                      [&](const Check& check) { return check.finding == finding; });
        if (!told) checks_.push_back({verdict, "ownership", finding});
    }

    const ToolkitPlaces& places_;
    const Workspace* workspace_;
    std::vector<Check> checks_;
    bool sound_ = true;
};

std::string_view word(Verdict verdict) {
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

}  // namespace

std::vector<Check> examine(const std::optional<std::string>& toolkit) {
    const Location location = readLocation(kConfigurationFile, kProductName);
    std::optional<Workspace> workspace;
    std::vector<Check> checks{checkConfiguration(location), checkRegistration(location),
                              checkTemporaryDirectory(workspace)};
    const ToolkitPlaces places{toolkit, location.toolkit, bundledPlaces(thisCommand())};
    const std::vector<Check> others = ToolkitExamination(places, workspace ? &*workspace : nullptr).run();
    checks.insert(checks.end(), others.begin(), others.end());
    return checks;
}

std::string checkLines(const std::vector<Check>& checks) {
    std::string lines;
    for (const Check& check : checks)
        lines += fmt::format("{:<8} {}: {}\n", word(check.verdict), check.subject, printable(check.finding));
    return lines;
}

bool inventoryCanWork(const std::vector<Check>& checks) {
    return std::none_of(checks.begin(), checks.end(),
                        [](const Check& check) { return check.verdict == Verdict::Problem; });
}

}  // namespace zavcli
