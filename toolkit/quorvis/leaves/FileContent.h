// Reading the file that a leaf names. What keeps it from being read becomes an event of the result.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "toolkit/quorvis/files/Files.h"
#include "toolkit/quorvis/formats/RandomAccessFile.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {

// The content of the file at `path`. Null when it does not exist or cannot be read.
std::shared_ptr<const std::string> contentOf(const std::string& path, EvaluationContext& context,
                                             LeafResult& result);
// At most its first `limit` bytes.
std::shared_ptr<const std::string> startOf(const std::string& path, std::uint64_t limit,
                                           EvaluationContext& context, LeafResult& result);

// The file at `path`, for leaves that need some parts of it. None when it does not exist or cannot be read. What is
// read is charged to the budget of the context, which must outlive the file.
std::optional<RandomAccessFile> openFile(const std::string& path, EvaluationContext& context,
                                         LeafResult& result);

}  // namespace toolkit::quorvis
