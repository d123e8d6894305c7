#pragma once

#include <memory>
#include <string>

#include "core/TemporaryDir.h"
#include "core/ZAVlog.h"
#include "kest/Malloced.h"

// The library handle: made by ZAV_init, released by ZAV_free, opaque to hosts.
struct ZAVCtx {
    kest::Malloced<char> exploiterName;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tempDir;  // borrows log
    std::wstring homeDir;                        // of the scanners; empty when unknown
};
