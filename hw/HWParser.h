#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"
#include "tessa/Node.h"

// The scanner's output file, as a tree, into the context's tables. Each function returns 0 or 104.
namespace zav {

// All instances of the document. On 104 the instances before the fault are kept. Throws std::bad_alloc.
int HW_parseHWData(ZAVHwCtx* context, const tessa::Node* root);

// The fields of an instance element, added to `instance`. They point into the document's texts.
int HW_parseHWGroup(ZAVHwCtx* context, HWInstance* instance, const tessa::Node* element);

// Adds the text of a field element to `value`.
int HW_parseHWField(ZAVHwCtx* context, const tessa::Node* field, std::wstring& value);

}  // namespace zav
