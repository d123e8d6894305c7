// What the commands that run a scanner have in common.
#pragma once

#include <optional>
#include <string>

#include "cli/commands/Options.h"
#include "cli/formats/TableWriter.h"
#include "cli/scan/Toolkit.h"
#include "cli/system/Output.h"

namespace zavcli {

// The toolkit to take the scanner from. Throws Failure.
Toolkit toolkitFor(const Options& options, const Scanner& scanner);

// Tells the scanner which directory to scan. Returns it, empty for this machine.
std::string setScannedRoot(const Options& options, const Scanner& scanner);

TableStyle tableStyle(const Options& options);

// Where the inventory goes: the file of --output, else standard output.
class Destination {
  public:
    // Makes sure that the file can be written. Throws Failure.
    explicit Destination(const Options& options);
    // Throws Failure.
    void write(const std::string& text);

  private:
    std::optional<OutputFile> file_;
};

}  // namespace zavcli
