#pragma once

#include <initializer_list>
#include <memory_resource>
#include <string_view>

#include "toolkit/machine/text/Budget.h"

namespace toolkit {

// Owns the texts of packages. Each database has an allowance of its own, so that a large one does not leave less for the
// others.
class PackageTexts {
  public:
    explicit PackageTexts(const Allowance& allowance = {}) : allowance_(allowance) {}

    // Nothing is read after this time.
    void endAt(std::chrono::steady_clock::time_point end) { allowance_.deadline = end; }

    // Restores the allowance for another database.
    void begin() { budget_ = Budget(allowance_); }
    Budget& budget() { return budget_; }

    // The concatenation of these texts; empty when the budget is spent.
    std::string_view keep(std::initializer_list<std::string_view> texts);
    std::string_view keep(std::string_view text) { return keep({text}); }

  private:
    Allowance allowance_;
    Budget budget_{allowance_};
    std::pmr::monotonic_buffer_resource copies_;
};

}  // namespace toolkit
