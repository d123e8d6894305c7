#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"

namespace zav {

// Reads a plain output file (tessa/PlainReader.h) directly into the context's tables, without a tree. Returns the number of
// instances. Returns -1 and leaves the tables empty if the document is not plain or anything is wrong with it: it must then
// be read as a tree, which tells what is wrong. Logs nothing. Throws Fault if the file cannot be read, and std::bad_alloc.
int HW_readPlainOutput(ZAVHwCtx* context, const std::wstring& path);

}  // namespace zav
