#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"
#include "tessa/Node.h"

// Converts the trees of the scanner's two files into the context's results and warnings. Each function returns 3 for a
// null context and throws std::bad_alloc.
namespace zav {

// Reads both files and stores their content. Returns 0; 204 when the output cannot be read, in which case nothing is
// stored; 205 when the warnings cannot be read, in which case all results are stored.
int SW_ParseOutput(ZAVSwCtx* context, std::wstring outputFile, std::wstring warningsFile);

// Appends the results of the document with this root and prepares them for the getters.
int SW_parseOutData(ZAVSwCtx* context, const tessa::Node* root);

// Appends the result of one element; for null an empty one. It points into the document's texts, which must live as long
// as the results.
int SW_parseMatchedSignature(ZAVSwCtx* context, const tessa::Node* signature);

// Appends the warnings of the document with this root.
int SW_parseWarnData(ZAVSwCtx* context, const tessa::Node* root);

}  // namespace zav
