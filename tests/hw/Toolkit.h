#pragma once

#include <string>

#include "tests/support/Toolkit.h"

namespace hwtest {

// A toolkit whose hardware scanner is one of the programs in scanners/.
class Toolkit : public zavtest::Toolkit {
  public:
    // The directory's name may hold whatever a path may hold.
    explicit Toolkit(const std::string& name = "toolkit") : zavtest::Toolkit("quorvah", HW_SCANNERS, name) {}

    // Makes a scanner that writes this to its output file and succeeds.
    void scannerWrites(const std::string& output) const {
        scannerIs("CopyOutput");
        put("output.xml", output);
    }
};

}  // namespace hwtest
