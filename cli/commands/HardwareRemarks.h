// What a person should know of an inventory whatever its format.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/Model.h"

namespace zavcli {

// A line for each way in which groups are not complete, such as "could not be read: SoftwarePackages: the rpm database is
// damaged". Groups of which the scanner does not tell are passed over.
std::vector<std::string> remarksOn(const Inventory& inventory);

// Whether something that was asked for could not be read: a group that could not be read; one that is incomplete for
// another reason than a missing permission; and, among groups that were `named`, one that the scanner does not know to
// gather.
bool lacksWhatWasAskedFor(const Inventory& inventory, bool named);

}  // namespace zavcli
