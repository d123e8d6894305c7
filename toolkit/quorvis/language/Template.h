#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// A text in which "${name}" stands for a variable and "$${" for "${" itself.
//     Template::parse("lib${name}.so", value, problem)
class Template {
  public:
    struct Piece {
        std::string_view text;  // literal text, or the name of a variable
        bool variable = false;
    };

    Template() = default;
    // A text without variables.
    explicit Template(std::string_view literal) : source_(literal) {}

    // False, with `problem` told in words, when "${" is not closed or its name is empty. `text` outlives the
    // template.
    static bool parse(std::string_view text, Template& parsed, std::string& problem);

    // Whether the text is what it says, as nearly all are: then source() is the value.
    bool constant() const { return constant_; }
    std::string_view source() const { return source_; }
    // The pieces of a text that is not constant, in order. They are found anew each time: few texts are asked for
    // theirs.
    std::vector<Piece> pieces() const;

  private:
    std::string_view source_;
    bool constant_ = true;
};

}  // namespace toolkit::quorvis
