#include "toolkit/quorvis/leaves/FileFilter.h"

#include <charconv>
#include <limits>

#include "kest/Ascii.h"
#include "toolkit/quorvis/facts/Accounts.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kNobody = std::numeric_limits<std::uint64_t>::max();

std::optional<std::uint64_t> parsed(std::string_view text, int base) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool isOrAny(const std::optional<std::uint64_t>& wanted, std::uint64_t value) {
    return !wanted || *wanted == value;
}

}  // namespace

FileFilter::FileFilter(const Query& query, EvaluationContext& context, LeafResult& result)
    : size_(number(query, Attribute::Size, 10, result)),
      minSize_(number(query, Attribute::MinSize, 10, result)),
      maxSize_(number(query, Attribute::MaxSize, 10, result)),
      mode_(number(query, Attribute::Mode, 8, result)),
      sha256_(kest::lowerCase(query.get(Attribute::Sha256))) {
    readKind(query, result);
    readOwner(query, context, result);
}

std::optional<std::uint64_t> FileFilter::number(const Query& query, Attribute attribute, int base,
                                                LeafResult& result) {
    if (!query.has(attribute)) return std::nullopt;
    const std::optional<std::uint64_t> value = parsed(query.get(attribute), base);
    if (!value) {
        valid_ = false;
        result.fail(EventCode::Unsupported, {},
                    std::string(nameOf(attribute)) + " is no number: " + std::string(query.get(attribute)));
    }
    return value;
}

void FileFilter::readKind(const Query& query, LeafResult& result) {
    const std::string_view kind = query.get(Attribute::Kind);
    if (kind.empty() || kind == "any") return;
    if (kind == "file")
        kind_ = FileFacts::Kind::File;
    else if (kind == "dir")
        kind_ = FileFacts::Kind::Directory;
    else if (kind == "link")
        kind_ = FileFacts::Kind::Link;
    else
        result.fail(EventCode::Unsupported, {}, "There is no kind of file called " + std::string(kind));
    valid_ = valid_ && kind_.has_value();
}

void FileFilter::readOwner(const Query& query, EvaluationContext& context, LeafResult& result) {
    if (!query.has(Attribute::Owner)) return;
    const std::string_view owner = query.get(Attribute::Owner);
    owner_ = parsed(owner, 10);
    if (owner_) return;
    const Files::Facts accounts = context.files().look("/etc/passwd");
    if (accounts.access == Access::Failed) {
        valid_ = false;
        result.fail(EventCode::Io, "/etc/passwd", "Cannot be told who " + std::string(owner) + " is");
        return;
    }
    const std::optional<std::uint32_t> number = userNumber(context.root(), owner);
    owner_ = number ? std::uint64_t{*number} : kNobody;
}

bool FileFilter::pass(const FileFacts& facts) const {
    if (kind_ && *kind_ != facts.kind) return false;
    if (minSize_ && facts.size < *minSize_) return false;
    if (maxSize_ && facts.size > *maxSize_) return false;
    return isOrAny(size_, facts.size) && isOrAny(mode_, facts.mode) && isOrAny(owner_, facts.owner);
}

}  // namespace toolkit::quorvis
