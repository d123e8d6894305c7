// Cleans up when a signal ends this process.
#pragma once

#include <csignal>
#include <string>

namespace zavcli {

// Installs a handler for every signal that would end this process. The handler ends the scanner, removes what is
// registered below, and lets the signal end the process, so that the parent sees it. Ignored signals stay ignored.
void installSignalCleanup();

// Blocks all signals during its lifetime, for steps that must not be separated.
class SignalsBlocked {
  public:
    SignalsBlocked();
    ~SignalsBlocked();
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_{};
};

// Registers the directory of temporary files; an empty path means that there is none. REQUIRES: signals are blocked.
void registerTemporaryDirectory(const std::string& path);

// Registers an incomplete file by its name in an open directory; -1 means that there is none.
// REQUIRES: signals are blocked.
void registerUnfinishedFile(int directory, const std::string& name);

// Tells whether the terminal shows a progress line that must be erased.
void registerProgressLine(bool shown) noexcept;

}  // namespace zavcli
