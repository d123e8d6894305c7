#pragma once

#include <string_view>
#include <utility>

#include "tessa/Node.h"

namespace tessa {

// Finds the line of a node from a parser's events, without keeping the document. Nodes are counted as a TreeBuilder makes
// them.
class LineFinder {
  public:
    // Thrown when the node is reached.
    struct Found {
        int line;
    };

    LineFinder(NodePath place, bool keepWhitespace)
        : wanted_(std::move(place)), keepWhitespace_(keepWhitespace) {}

    void startElement(int line);
    void endElement();
    void text(std::string_view utf8, int line);

  private:
    void finishText(bool elementFollows);
    void visitNode(int line) const;

    NodePath wanted_;
    bool keepWhitespace_;
    NodePath next_;  // the place of the next node
    bool hasText_ = false;
    bool isWhitespace_ = true;  // whether the text so far is only white space
    bool breaksLine_ = false;   // whether the text so far contains a line break
    int textLine_ = 0;          // the first line of the text that is not white space
};

}  // namespace tessa
