// Owns the library's handle and its contexts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/GroupNames.h"
#include "cli/scan/Workspace.h"
#include "include/zav.h"

namespace zavcli {

// The name by which the library knows this command.
constexpr const char* kProductName = "zav";

// A message of the library, valid only during the call that delivers it.
struct LogMessage {
    int level = 0;
    int component = 0;
    std::string_view function;
    std::string_view text;
};

class LogListener {
  public:
    virtual ~LogListener() = default;
    // Must neither throw nor call the library.
    virtual void onMessage(const LogMessage& message) noexcept = 0;
};

class LibraryHandle {
  public:
    // Opens the library on a toolkit directory. If that is empty, no scanner can be started. Messages go to
    // the listener; without one they are discarded.
    // REQUIRES: the listener and the workspace outlive the handle. Throws Failure.
    LibraryHandle(LogListener* listener, const Workspace& workspace, const std::string& toolkit);
    ~LibraryHandle();
    LibraryHandle(const LibraryHandle&) = delete;
    LibraryHandle& operator=(const LibraryHandle&) = delete;

    // All groups that the library knows. Throws Failure.
    std::vector<GroupName> groups();

    // The contexts, which are made on first use. Both throw Failure.
    ZAVHwCtx* hardware();
    ZAVSwCtx* software();

  private:
    LogListener* listener_;
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* hardware_ = nullptr;
    ZAVSwCtx* software_ = nullptr;
};

}  // namespace zavcli
