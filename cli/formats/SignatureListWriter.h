// Writes the list of signatures: the products that they recognise, with publisher and identifier.
#pragma once

#include <string>
#include <vector>

#include "cli/formats/CsvWriter.h"
#include "cli/formats/TableWriter.h"
#include "cli/scan/SignatureFile.h"

namespace zavcli {

// A table for people, sorted by name.
std::string signatureTable(const std::vector<SignatureEntry>& signatures, const TableStyle& style);

// {"signatures": [{"guid": ..., "name": ..., "publisher": ...}, ...]} in the order of the files. An unknown
// publisher is omitted.
std::string signatureJson(const std::vector<SignatureEntry>& signatures);

// The columns guid, name, publisher, in the order of the files.
std::string signatureCsv(const std::vector<SignatureEntry>& signatures, CsvFormulas formulas);

}  // namespace zavcli
