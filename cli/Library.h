// The library as this command uses it: one handle with one hardware context and, when it is asked for, one
// software context.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Groups.h"
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
    // Opens the library; without a toolkit directory, the configured one is used.
    // REQUIRES: the listener outlives the Library. Throws Failure.
    Library(Listener& listener, const std::optional<std::string>& toolkit);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // All groups that the library knows.
    std::vector<GroupName> groups() const;

    ZAVHwCtx* hardware() const { return hardware_; }

    // Throws Failure when the context cannot be made.
    ZAVSwCtx* software();

  private:
    Listener* listener_;
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* hardware_ = nullptr;
    ZAVSwCtx* software_ = nullptr;
};

}  // namespace zavcli
