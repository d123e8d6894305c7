#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"
#include "tessa/Node.h"

// The scanner's two files, as trees, into the context's results and warnings. Each function returns 3 for a
// null context, and throws std::bad_alloc.
namespace zav {

// Reads both files and stores what they hold: 0; 204 when the output cannot be read, and nothing is stored;
// 205 when the warnings cannot be read, and all results are stored.
int SW_ParseOutput(ZAVSwCtx* context, std::wstring outputFile, std::wstring warningsFile);

// Appends the results of a document, given by its root, and makes them ready for the getters.
int SW_parseOutData(ZAVSwCtx* context, const tessa::Node* root);

// Appends the result of one element; an empty one for null. It points into the document's texts, which are
// to live as long as the results.
int SW_parseMatchedSignature(ZAVSwCtx* context, const tessa::Node* signature);

// Appends the warnings of a document, given by its root.
int SW_parseWarnData(ZAVSwCtx* context, const tessa::Node* root);

}  // namespace zav
