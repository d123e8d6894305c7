// The commands. Each prints its result and returns the exit status. All throw Failure.
#pragma once

#include "cli/commands/Options.h"

namespace zavcli {

int runCapture(const Options& options);
int runDiff(const Options& options);
int runDoctor(const Options& options);
int runExport(const Options& options);
int runFacts(const Options& options);
int runGroups(const Options& options);
int runHardware(const Options& options);
int runReport(const Options& options);
int runSbom(const Options& options);
int runSoftware(const Options& options);
int runSuggestion(const Options& options);
int runSummary(const Options& options);
int runSignatureList(const Options& options);
int runSignatureCheck(const Options& options);
int runSignatureExplanation(const Options& options);

}  // namespace zavcli
