// The library as this command uses it: one handle with, as soon as one of them is asked for, a hardware context and a
// software context.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Groups.h"
#include "cli/scan/Workspace.h"
#include "include/zav.h"

namespace zavcli {

// The name under which this command is known to the library.
constexpr const char* kProductName = "zav";

// One message of the library; valid during the call only.
struct Message {
    int level = 0;
    int component = 0;
    std::string_view function;
    std::string_view text;
};

class Listener {
  public:
    virtual ~Listener() = default;
    // Must neither throw nor call the library.
    virtual void hear(const Message& message) noexcept = 0;
};

class Library {
  public:
    // Opens the library on a toolkit directory; without one, no scanner can be started.
    // REQUIRES: the listener and the workspace outlive the Library. Throws Failure.
    Library(Listener& listener, const Workspace& workspace, const std::string& toolkit);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // All groups that the library knows. Throws Failure.
    std::vector<GroupName> groups();

    // Both throw Failure when the context cannot be made.
    ZAVHwCtx* hardware();
    ZAVSwCtx* software();

  private:
    Listener* listener_;
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* hardware_ = nullptr;
    ZAVSwCtx* software_ = nullptr;
};

}  // namespace zavcli
