#pragma once

#include <string>

#include "tests/support/Toolkit.h"

namespace swtest {

// A toolkit whose signature scanner is one of the programs in scanners/.
class Toolkit : public zavtest::Toolkit {
  public:
    // The directory's name may hold whatever a path may hold.
    explicit Toolkit(const std::string& name = "toolkit") : zavtest::Toolkit("quorvis", SW_SCANNERS, name) {}

    // Makes a scanner that writes this to its two files and succeeds.
    void scannerWrites(const std::string& output, const std::string& warnings = "<Events/>") const {
        scannerIs("CopyFiles");
        put("output.xml", output);
        put("warnings.xml", warnings);
    }
};

}  // namespace swtest
