#include "cli/Doctor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <fstream>

#include "cli/Configuration.h"
#include "cli/Evaluation.h"
#include "cli/Failure.h"
#include "cli/Inventory.h"
#include "cli/Probe.h"
#include "cli/Text.h"
#include "cli/Toolkit.h"

namespace zavcli {

namespace {

class Silence : public Listener {
  public:
    void hear(const Message& /*message*/) noexcept override {}
};

Check checkConfiguration(const Probe& probe) {
    const std::string subject = "configuration";
    if (!probe.configured) {
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
        return {Verdict::Ok, subject, fmt::format("{} names {}", kConfigurationFile, probe.toolkit)};
    return {Verdict::Note, subject, fmt::format("{}: {}", kConfigurationFile, fmt::join(faults, "; "))};
}

Check checkRegistration(const Probe& probe) {
    if (probe.registered)
        return {Verdict::Ok, "registration", fmt::format("'{}' is a registered product", kProductName)};
    return {
        Verdict::Note, "registration",
        fmt::format("'{}' is not registered, which does not hinder it; to register it, add it to the line "
                    "'ZAV_Exploiters = {}' of {}, names separated by ':'",
                    kProductName, kProductName, kConfigurationFile)};
}

Check checkTemporaryDirectory(const Probe& probe) {
    return {Verdict::Ok, "temporary files", fmt::format("{} was made and removed again", probe.workspace)};
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
Check checkHardwareScanner(const Toolkit& toolkit) {
    const std::string scanner = scannerPath(toolkit.directory, kHardwareScanner);
    try {
        Silence silence;
        const Library library(silence, toolkit.directory);
        scanGroups(library, toolkit.directory, {kScanInfo});
        return {Verdict::Ok, "hardware scanner", fmt::format("{} ran and wrote a valid inventory", scanner)};
    } catch (const Failure& failure) {
        return {Verdict::Problem, "hardware scanner",
                fmt::format("{}; 'zav hw -vv' shows every step of a scan", failure.what())};
    }
}

// The library is opened on the toolkit and no signature at all is evaluated.
Check checkSoftwareScanner(const ToolkitPlaces& places) {
    const std::string subject = "software scanner";
    std::string scanner;
    try {
        scanner = scannerPath(chooseToolkit(places, kSoftwareScanner).directory, kSoftwareScanner);
    } catch (const Failure& failure) {
        return {
            Verdict::Note, subject,
            fmt::format("{}; software signatures cannot be evaluated, but a hardware inventory needs none",
                        failure.what())};
    }
    try {
        Silence silence;
        Library library(silence, std::filesystem::path(scanner).parent_path().string());
        evaluateNothing(library, scanner);
        return {Verdict::Ok, subject, fmt::format("{} ran and wrote valid results", scanner)};
    } catch (const Failure& failure) {
        return {Verdict::Problem, subject,
                fmt::format("{}; 'zav sw FILE -vv' shows every step of an evaluation", failure.what())};
    }
}

void examineToolkit(std::vector<Check>& checks, const ToolkitPlaces& places) {
    try {
        const Toolkit toolkit = chooseToolkit(places, kHardwareScanner);
        const bool passedOver = !places.configured.empty() && toolkit.source == ToolkitSource::Bundled;
        checks.push_back({passedOver ? Verdict::Note : Verdict::Ok, "toolkit directory",
                          fmt::format("{} ({}){}", toolkit.directory, origin(toolkit.source),
                                      passedOver ? fmt::format("; the configured {} has no usable 'quorvah'",
                                                               places.configured)
                                                 : "")});
        checks.push_back(checkHardwareScanner(toolkit));
    } catch (const Failure& failure) {
        checks.push_back({Verdict::Problem, "toolkit directory", failure.what()});
    }
    checks.push_back(checkSoftwareScanner(places));
}

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
    Silence silence;
    Probe probe;
    try {
        probe = probeLibrary(silence);
    } catch (const Failure& failure) {
        return {{Verdict::Problem, "temporary files", failure.what()}};
    }
    std::vector<Check> checks{checkConfiguration(probe), checkRegistration(probe),
                              checkTemporaryDirectory(probe)};
    examineToolkit(checks, {toolkit, probe.toolkit, bundledPlaces(thisCommand())});
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
