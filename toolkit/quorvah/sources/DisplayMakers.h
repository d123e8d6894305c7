#pragma once

#include <string>
#include <string_view>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// The makers of displays by their PNP ids of three letters: those of the host's pnp.ids or of the directory in the option
// --ids, or else the most common ones.
class DisplayMakers {
  public:
    explicit DisplayMakers(const Options& options);

    // Empty if the id is not known.
    std::string_view name(std::string_view id) const;

  private:
    std::string text_;
};

}  // namespace toolkit::quorvah
