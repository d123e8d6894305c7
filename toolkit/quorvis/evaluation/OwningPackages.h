#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/facts/PackageIndex.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/language/Variables.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"

namespace toolkit::quorvis {

// The value of an item; empty if it has none of this name.
std::string valueOf(const Item& item, std::string_view name);
// The file that an item stands for; empty if it stands for none.
std::string fileOf(const Leaf& leaf, const Item& item);

// The packages that own the files which a signature found.
class OwningPackages {
  public:
    explicit OwningPackages(EvaluationContext& context) : context_(context) {}

    // Adds the values of the package that owns the item's file.
    void describe(const Leaf& leaf, Item& item);

    // Remembers the package that owns the file of a match.
    void note(const Leaf& leaf, const Item& item);
    // Whether the package that the item stands for is a remembered one, or a part of the same product.
    bool hold(const Item& package);

  private:
    const PackageIndex::Row* ownerOf(const std::string& path, bool linkFree);

    EvaluationContext& context_;
    std::vector<const PackageIndex::Row*> noted_;
};

}  // namespace toolkit::quorvis
