#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"
#include "tessa/Node.h"

// Converts the tree of the scanner's output file into the context's tables. Each function returns 0 or 104.
namespace zav {

// Reads all instances of the document. If it returns 104, the instances before the fault are kept. Throws
// std::bad_alloc.
int HW_parseHWData(ZAVHwCtx* context, const tessa::Node* root);

// Logs the end of a successful parse.
void HW_reportInstances(ZAVHwCtx* context, int instances);

// Appends the fields of an instance's element to `instance`. They point into the document's texts.
int HW_parseHWGroup(ZAVHwCtx* context, HWInstance* instance, const tessa::Node* element);

// Appends the text of a field's element to `value`, in UTF-8.
int HW_parseHWField(ZAVHwCtx* context, const tessa::Node* field, std::string& value);

}  // namespace zav
