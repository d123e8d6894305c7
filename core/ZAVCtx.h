#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include "core/TemporaryDir.h"
#include "core/ZAVlog.h"

namespace zav {

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

}  // namespace zav

// The library handle: made by ZAV_init, released by ZAV_free, opaque to hosts.
struct ZAVCtx {
    std::unique_ptr<char, zav::FreeBlock> exploiterName;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tempDir;  // borrows log
    std::wstring homeDir;                        // of the scanners; empty when unknown
};
