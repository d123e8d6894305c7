// The commands, each a function that prints its result and returns the exit status. All throw Failure.
#pragma once

#include "cli/commands/Options.h"

namespace zavcli {

int listGroups(const Options& options);
int hardware(const Options& options);
int software(const Options& options);
int checkSoftwareSignatures(const Options& options);
int explainSoftwareSignature(const Options& options);

}  // namespace zavcli
