#pragma once

#include <string_view>
#include <utility>

#include "tessa/Node.h"

namespace tessa {

// Finds the line of a node in what a parser meets. Nodes are counted as a TreeBuilder makes them; nothing of the
// document is kept.
class LineFinder {
  public:
    // Thrown as soon as the node is met.
    struct Found {
        int line;
    };

    LineFinder(Place place, bool keepWhitespace)
        : wanted_(std::move(place)), keepWhitespace_(keepWhitespace) {}

    void startElement(int line);
    void endElement();
    void text(std::string_view utf8, int line);

  private:
    void finishText(bool elementFollows);
    void meetNode(int line) const;

    Place wanted_;
    bool keepWhitespace_;
    Place next_;  // where the next node will stand
    bool hasText_ = false;
    bool isWhitespace_ = true;  // the text so far
    bool breaksLine_ = false;   // the text so far
    int textLine_ = 0;          // where the text, less the white space before it, begins
};

}  // namespace tessa
