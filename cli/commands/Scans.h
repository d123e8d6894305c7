// The scans that the commands do with the options of the command line. All functions throw Failure.
#pragma once

#include <string>
#include <vector>

#include "cli/commands/Options.h"
#include "cli/scan/EvaluationOptions.h"
#include "cli/scan/HardwareInventory.h"
#include "cli/scan/SignatureFile.h"
#include "cli/scan/SoftwareInventory.h"
#include "cli/scan/Workspace.h"

namespace zavcli {

// Scans the groups of these names, or all groups if there are none, and shows the progress.
HardwareInventory scanMachine(const Options& options, const std::vector<std::string>& groupNames);

// Scans all groups by their files only, without asking the kernel, and lets the scanner write what it reads to the file
// `record` in the workspace.
HardwareInventory recordMachine(const Options& options, const Workspace& workspace,
                                const std::string& record);

// The signature files of the command line, else those that come with the command.
std::vector<std::string> signaturePaths(const Options& options);
std::vector<SignatureFile> readSignatureFiles(const Options& options);

struct EvaluationOptions {
    std::vector<Preset> presets;
    std::vector<Setting> settings;
};

// What the command line sets for the evaluation of these files. Reports presets that no signature uses.
EvaluationOptions evaluationOptions(const Options& options, const std::vector<SignatureFile>& files);

// Evaluates the files and shows the progress.
SoftwareInventory evaluateSignatures(const Options& options, const std::vector<SignatureFile>& files);

// Prints what could not be examined. The shipped signatures search everything, so private places are only counted
// unless more messages are requested.
void printWarnings(const SoftwareInventory& inventory, const Options& options);

}  // namespace zavcli
