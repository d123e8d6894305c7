#include "tessa/LineFinder.h"

namespace tessa {

void LineFinder::startElement(int line) {
    finishText(true);
    visitNode(line);
    next_.push_back(0);
}

void LineFinder::endElement() {
    finishText(false);
    next_.pop_back();
    if (!next_.empty()) ++next_.back();
}

void LineFinder::text(std::string_view utf8, int line) {
    hasText_ = true;
    if (!isWhitespace_) return;
    textLine_ = line;
    isWhitespace_ = utf8.find_first_not_of(" \t\r\n") == std::string_view::npos;
    breaksLine_ = breaksLine_ || utf8.find('\n') != std::string_view::npos;
}

// Drops the same texts as TreeBuilder::finishText().
void LineFinder::finishText(bool elementFollows) {
    if (!hasText_) return;
    const bool isLayout = isWhitespace_ && (elementFollows || breaksLine_ || next_.back() > 0);
    if (keepWhitespace_ || !isLayout) {
        visitNode(textLine_);
        ++next_.back();
    }
    hasText_ = false;
    isWhitespace_ = true;
    breaksLine_ = false;
}

void LineFinder::visitNode(int line) const {
    if (next_ == wanted_) throw Found{line};
}

}  // namespace tessa
