// The data that the page of `zav report` shows, as one JSON document.
#pragma once

#include <string>

#include "cli/diff/SavedInventory.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// Each may be null.
struct PageContent {
    const SavedInventory* hardware = nullptr;
    const SoftwareInventory* software = nullptr;
    const SavedInventory* earlier = nullptr;  // what the hardware is compared with
};

// {"hardware": {...}, "software": {...}, "catalogue": {"Storage": {...}}, "changes": {...}}: the inventories, the catalogue of
// their groups, and what has changed, as `zav diff --format json` reports it. Only ASCII, and without the characters that have a
// meaning in HTML, so that it can be the text of any element.
std::string pageDocument(const PageContent& content);

}  // namespace zavcli
