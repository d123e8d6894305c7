#include "toolkit/machine/files/ParagraphReader.h"

#include <algorithm>
#include <cstring>

namespace toolkit {
namespace {

constexpr std::size_t kBuffer = std::size_t{128} << 10;  // stays in the processor's cache
constexpr std::size_t kMaxParagraph = std::size_t{16} << 20;

constexpr std::string_view kParting = "\n\n";

// The offset behind the first blank line; 0 when there is none. memmem is faster than std::string_view::find.
std::size_t behindFirstParting(std::string_view text) {
    const void* const found = ::memmem(text.data(), text.size(), kParting.data(), kParting.size());
    if (found == nullptr) return 0;
    return static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) + kParting.size();
}

// The offset behind the last blank line; 0 when there is none.
std::size_t behindLastParting(std::string_view text) {
    while (text.size() >= kParting.size()) {
        const void* const found = ::memrchr(text.data(), '\n', text.size());
        if (found == nullptr) return 0;
        text = text.substr(0, static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) + 1);
        if (text.ends_with(kParting)) return text.size();
        text.remove_suffix(1);
    }
    return 0;
}

}  // namespace

ParagraphReader::ParagraphReader(const Root& root, const std::string& path, Budget& budget)
    : file_(root, path), budget_(budget) {
    if (file_.state() == InputFile::State::Open) buffer_.resize(kBuffer);
}

void ParagraphReader::noteDamage(std::uint64_t at) {
    damagedAt_ = std::min(damagedAt_, at);
}

// Appends more of the file to the buffer. False at the end of the file and when the budget is spent.
bool ParagraphReader::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size());
    const std::span<char> room = std::span(buffer_).subspan(end_);
    const std::size_t count = budget_.isSpent() ? 0 : file_.readAt(read_, room);
    const bool allowed = budget_.read(count);
    if (!allowed || file_.failed()) noteDamage(read_);
    if (!allowed) return false;
    read_ += count;
    end_ += count;
    return count > 0;
}

// The length of the whole paragraphs in the buffer; 0 when there is none.
std::size_t ParagraphReader::endOfParagraphs() {
    const std::string_view text(buffer_.data() + begin_, end_ - begin_);
    const std::size_t before = searched_;
    const std::size_t found = behindLastParting(text.substr(before));
    searched_ = text.empty() ? 0 : text.size() - 1;
    return found == 0 ? 0 : before + found;
}

// Skips the paragraph that fills the buffer, up to its end if the buffer has that.
void ParagraphReader::pass() {
    const std::string_view text(buffer_.data() + begin_, end_ - begin_);
    const std::size_t found = behindFirstParting(text);
    if (!passing_) noteDamage(read_ - text.size());
    passing_ = found == 0;
    // The last character may be the first half of a blank line.
    begin_ += passing_ ? text.size() - std::min<std::size_t>(text.size(), 1) : found;
    searched_ = 0;
}

std::string_view ParagraphReader::takeRest() {
    const std::string_view rest(buffer_.data() + begin_, end_ - begin_);
    begin_ = end_;
    searched_ = 0;
    if (passing_ || budget_.isSpent() || file_.failed()) return {};
    // Writers of these files end every line, so a file that does not was truncated.
    if (!rest.empty() && rest.back() != '\n') noteDamage(read_);
    return rest;
}

std::string_view ParagraphReader::next() {
    if (file_.state() != InputFile::State::Open) return {};
    while (fill()) {
        if (passing_) {
            pass();
            if (passing_) continue;
        }
        if (const std::size_t length = endOfParagraphs(); length > 0) {
            const std::string_view paragraphs(buffer_.data() + begin_, length);
            begin_ += length;
            searched_ = 0;
            return paragraphs;
        }
        if (end_ - begin_ >= kMaxParagraph) pass();
    }
    return takeRest();
}

}  // namespace toolkit
