#pragma once

#include <initializer_list>
#include <memory_resource>
#include <string_view>

#include "toolkit/machine/text/Budget.h"

namespace toolkit {

// Keeps the texts that packages are described with: they live as long as this does. Each database has an allowance of
// its own, so that what one of them takes too much the others need not do without.
class PackageTexts {
  public:
    explicit PackageTexts(const Allowance& allowance = {}) : allowance_(allowance) {}

    // From now on nothing is read after that time.
    void endAt(std::chrono::steady_clock::time_point end) { allowance_.deadline = end; }

    // Begins with another database.
    void begin() { budget_ = Budget(allowance_); }
    Budget& budget() { return budget_; }

    // A copy of these texts, one behind the other; empty where they are more than may be kept.
    std::string_view keep(std::initializer_list<std::string_view> texts);
    std::string_view keep(std::string_view text) { return keep({text}); }

  private:
    Allowance allowance_;
    Budget budget_{allowance_};
    std::pmr::monotonic_buffer_resource copies_;
};

}  // namespace toolkit
