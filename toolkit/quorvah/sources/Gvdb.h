#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

// A value in a database of dconf. Only the types that settings of screen savers have are decoded.
struct GvdbValue {
    std::optional<bool> boolean;
    Count number;
};

// A file of the form in which dconf keeps its settings (GVDB): a hash table of keys and serialised variants. Any bytes are
// accepted; what lies outside of the file or refers to itself is unknown.
class GvdbFile {
  public:
    // REQUIRES: `bytes` outlives this object.
    explicit GvdbFile(std::string_view bytes);

    // The value of a key, "/org/gnome/desktop/screensaver/lock-enabled"; nothing if there is none.
    std::optional<GvdbValue> find(std::string_view key) const;

  private:
    std::string_view item(std::size_t index) const;
    bool hasPath(std::string_view item, std::string_view path) const;

    std::string_view bytes_;
    std::string_view items_;
};

}  // namespace toolkit::quorvah
