#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/LeafSyntax.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Parses Each, Match and Output, which make up one Detection.
class DetectionParser {
  public:
    // `parent` is the element that contains the parts. REQUIRES: all arguments outlive this.
    DetectionParser(const Element& parent, const Settings& settings, Signature& signature,
                    Diagnostics& diagnostics);

    // Reads one part. Reports any other element, and a part that is not in its place.
    void read(const Element& part);
    // Whether a part was read.
    bool begun() const { return nextPart_ > 0; }
    // Checks the Detection as a whole and adds it to the signature.
    void finish();
    // The number of conditions that were read.
    std::size_t conditions() const { return conditions_; }

  private:
    void readEach(const Element& part);
    void readMatch(const Element& part);
    void readOutput(const Element& part);
    std::vector<Condition> readConditions(const Element& parent);
    std::optional<Condition> readCondition(const Element& parent, const Element& element);
    std::size_t addLeaf(const Element& element, const LeafRules& rules);
    void readVariable(const Element& element);

    const Element& parent_;
    const Settings& settings_;
    Signature& signature_;
    Diagnostics& diagnostics_;
    Detection detection_;
    std::size_t nextPart_ = 0;  // position of the first part that is still allowed
    std::size_t conditions_ = 0;
};

}  // namespace toolkit::quorvis
