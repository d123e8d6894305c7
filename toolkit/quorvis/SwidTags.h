#pragma once

namespace toolkit::quorvis {

class Machine;

// The SWID tags of the machine, read once.
class SwidTags {
  public:
};

}  // namespace toolkit::quorvis
