#include "toolkit/quorvis/language/Template.h"

namespace toolkit::quorvis {

namespace {

void addLiteral(std::vector<Template::Piece>& pieces, std::string_view text) {
    if (!text.empty()) pieces.push_back({text, false});
}

// Takes "${name}" from the front of `text`. False, with `problem` set, when it is invalid.
bool takeVariable(std::string_view& text, std::string_view& name, std::string& problem) {
    const std::size_t end = text.find('}');
    if (end == std::string_view::npos) {
        problem = "\"${\" is not closed";
        return false;
    }
    name = text.substr(2, end - 2);
    if (name.empty() || name.find('$') != std::string_view::npos ||
        name.find('{') != std::string_view::npos) {
        problem = name.empty() ? "\"${}\" does not name a variable"
                               : "the name of a variable contains another variable";
        return false;
    }
    text.remove_prefix(end + 1);
    return true;
}

// False, with `problem` set, when the text is not a valid template.
bool split(std::string_view text, std::vector<Template::Piece>& pieces, std::string& problem) {
    std::size_t passed = 0;
    while ((passed = text.find('$', passed)) != std::string_view::npos) {
        const std::string_view rest = text.substr(passed);
        if (rest.starts_with("$${")) {
            addLiteral(pieces, text.substr(0, passed));
            text.remove_prefix(passed + 1);  // the literal "${" remains
            passed = 2;
        } else if (rest.starts_with("${")) {
            addLiteral(pieces, text.substr(0, passed));
            text = rest;
            std::string_view name;
            if (!takeVariable(text, name, problem)) return false;
            pieces.push_back({name, true});
            passed = 0;
        } else {
            ++passed;
        }
    }
    addLiteral(pieces, text);
    return true;
}

}  // namespace

bool Template::parse(std::string_view text, Template& parsed, std::string& problem) {
    parsed = Template(text);
    if (text.find("${") == std::string_view::npos) return true;
    std::vector<Piece> pieces;
    const bool valid = split(text, pieces, problem);
    parsed.constant_ = pieces.empty();
    return valid;
}

std::vector<Template::Piece> Template::pieces() const {
    std::vector<Piece> pieces;
    std::string problem;
    split(source_, pieces, problem);
    return pieces;
}

}  // namespace toolkit::quorvis
