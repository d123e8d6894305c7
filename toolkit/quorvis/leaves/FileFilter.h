#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "toolkit/quorvis/files/Files.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {

// What a query of kind File or Glob asks of a file besides its path.
class FileFilter {
  public:
    // Reads the query; a value that is wrong fails in the result, and then valid() is false.
    FileFilter(const Query& query, EvaluationContext& context, LeafResult& result);

    bool valid() const { return valid_; }
    // Whether the files in question are links themselves, not what they lead to.
    bool ofLinks() const { return kind_ == FileFacts::Kind::Link; }

    bool pass(const FileFacts& facts) const;
    // The checksum that is asked for, in lower-case digits; empty when none is.
    const std::string& sha256() const { return sha256_; }

  private:
    void readKind(const Query& query, LeafResult& result);
    void readOwner(const Query& query, EvaluationContext& context, LeafResult& result);
    std::optional<std::uint64_t> number(const Query& query, Attribute attribute, int base,
                                        LeafResult& result);

    bool valid_ = true;
    std::optional<FileFacts::Kind> kind_;  // any when not given
    std::optional<std::uint64_t> size_;
    std::optional<std::uint64_t> minSize_;
    std::optional<std::uint64_t> maxSize_;
    std::optional<std::uint64_t> mode_;
    std::optional<std::uint64_t> owner_;
    std::string sha256_;
};

}  // namespace toolkit::quorvis
