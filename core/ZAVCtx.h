#pragma once

#include <memory>
#include <string>

#include "core/TemporaryDir.h"
#include "core/ZAVlog.h"
#include "kest/Malloced.h"

// The library handle. ZAV_init makes it, ZAV_free releases it. Opaque to hosts.
struct ZAVCtx {
    kest::Malloced<char> exploiterName;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tempDir;  // borrows log
    std::wstring homeDir;                        // the directory of the scanners; empty if unknown
};
