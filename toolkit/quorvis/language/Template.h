#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// A text that may contain variables: "lib${name}.so". "$${" is an escaped "${".
class Template {
  public:
    struct Piece {
        std::string_view text;  // literal text, or the name of a variable
        bool variable = false;
    };

    Template() = default;
    // A text without variables.
    explicit Template(std::string_view literal) : source_(literal) {}

    // False, with `problem` set, when "${" is not closed or its name is empty. REQUIRES: `text` outlives the template.
    static bool parse(std::string_view text, Template& parsed, std::string& problem);

    // Whether the text contains neither variables nor escapes. Then source() is its value.
    bool constant() const { return constant_; }
    std::string_view source() const { return source_; }
    // The pieces of a text that is not constant. They are computed by each call: most texts are constant.
    std::vector<Piece> pieces() const;

  private:
    std::string_view source_;
    bool constant_ = true;
};

}  // namespace toolkit::quorvis
