#include "toolkit/machine/ParagraphReader.h"

#include <algorithm>
#include <cstring>

namespace toolkit {
namespace {

constexpr std::size_t kBuffer = std::size_t{128} << 10;  // stays in the processor's cache
constexpr std::size_t kLongestParagraph = std::size_t{16} << 20;

constexpr std::string_view kParting = "\n\n";

}  // namespace

ParagraphReader::ParagraphReader(const Root& root, const std::string& path, Budget& budget)
    : file_(root, path), budget_(budget) {
    if (file_.state() == InputFile::State::Open) buffer_.resize(kBuffer);
}

void ParagraphReader::noteDamage(std::uint64_t at) {
    damagedAt_ = std::min(damagedAt_, at);
}

// Reads more behind what is there. False at the end, and where no more may be read.
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

// Behind the last blank line of what is there; 0 when there is none.
std::size_t ParagraphReader::endOfParagraphs() {
    const std::string_view text(buffer_.data() + begin_, end_ - begin_);
    const std::string_view fresh = text.substr(searched_);
    const std::size_t found = fresh.rfind(kParting);
    const std::size_t before = searched_;
    searched_ = text.empty() ? 0 : text.size() - 1;
    return found == std::string_view::npos ? 0 : before + found + kParting.size();
}

// Forgets the paragraph that the buffer is full of, up to its end if that is in sight.
void ParagraphReader::pass() {
    const std::string_view text(buffer_.data() + begin_, end_ - begin_);
    const std::size_t found = text.find(kParting);
    if (!passing_) noteDamage(read_ - text.size());
    passing_ = found == std::string_view::npos;
    // The last character may be the first half of the parting.
    begin_ += passing_ ? text.size() - std::min<std::size_t>(text.size(), 1) : found + kParting.size();
    searched_ = 0;
}

std::string_view ParagraphReader::takeRest() {
    const std::string_view rest(buffer_.data() + begin_, end_ - begin_);
    begin_ = end_;
    searched_ = 0;
    if (passing_ || budget_.isSpent() || file_.failed()) return {};
    // Whoever writes such a file ends every line; one that ends within a line was cut off.
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
        if (end_ - begin_ >= kLongestParagraph) pass();
    }
    return takeRest();
}

}  // namespace toolkit
