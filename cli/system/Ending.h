// What must not be left behind, whatever signal ends this process.
#pragma once

#include <csignal>
#include <string>

namespace zavcli {

// From now on each signal that would end this process ends its scanner first and removes what is noted below; then the
// process ends by that signal, as its parent sees. Signals that are ignored stay ignored.
void cleanUpAtSignals();

// Keeps all signals waiting while it lives, for steps that belong together.
class SignalsHeld {
  public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

  private:
    sigset_t before_{};
};

// The directory of temporary files; empty when there is none any more. REQUIRES: signals are held.
void noteTemporaryDirectory(const std::string& path);

// A file that is not complete, by its name in an open directory; -1 when there is none any more. REQUIRES: signals are
// held.
void noteUnfinishedFile(int directory, const std::string& name);

// Whether a line on the terminal is to be cleared.
void noteLineShown(bool shown) noexcept;

}  // namespace zavcli
