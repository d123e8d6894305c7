#pragma once

namespace toolkit::quorvis {

class Machine;

// The running processes of the machine, read from /proc once.
class Processes {
  public:
};

}  // namespace toolkit::quorvis
