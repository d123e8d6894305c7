#include "toolkit/quorvis/language/Identity.h"

#include <algorithm>
#include <vector>

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kCpeStart = "cpe:2.3:";
constexpr std::size_t kCpeComponents = 11;
constexpr std::string_view kPurlStart = "pkg:";

using Pieces = std::vector<Template::Piece>;

Pieces piecesOf(const Template& text) {
    if (text.constant()) return {{text.source(), false}};
    return text.pieces();
}

bool isLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isPrintable(char c) {
    return c > ' ' && c <= '~';
}

// Divides literal text at colons that are not escaped. Each component is a list of pieces.
std::vector<Pieces> componentsOf(const Pieces& pieces) {
    std::vector<Pieces> components(1);
    for (const Template::Piece& piece : pieces) {
        if (piece.variable) {
            components.back().push_back(piece);
            continue;
        }
        std::size_t begin = 0;
        for (std::size_t i = 0; i <= piece.text.size(); ++i) {
            if (i < piece.text.size() && piece.text[i] == '\\') {
                ++i;
                continue;
            }
            if (i < piece.text.size() && piece.text[i] != ':') continue;
            if (i > begin) components.back().push_back({piece.text.substr(begin, i - begin), false});
            if (i < piece.text.size()) components.emplace_back();
            begin = i + 1;
        }
    }
    return components;
}

// Whether a component without variables is "*", "-", or a text in which all that is special is escaped. "*" and "?" may
// stand at both ends.
bool isCpeComponent(std::string_view text) {
    if (text.empty() || text == "*" || text == "-") return !text.empty();
    const std::size_t begin = text.find_first_not_of("*?");
    if (begin == std::string_view::npos) return false;
    std::size_t i = begin;
    for (; i < text.size() && text[i] != '*' && text[i] != '?'; ++i) {
        if (text[i] == '\\') {
            if (++i == text.size() || !isPrintable(text[i]) || isLetterOrDigit(text[i])) return false;
        } else if (!isLetterOrDigit(text[i]) &&
                   std::string_view("_.-").find(text[i]) == std::string_view::npos) {
            return false;
        }
    }
    return text.find_first_not_of("*?", i) == std::string_view::npos;
}

// A value as a part of a component. None when it cannot be written.
std::optional<std::string> quotedForCpe(std::string_view value) {
    std::string text;
    for (const char c : value) {
        if (c >= 'A' && c <= 'Z') {
            text += static_cast<char>(c - 'A' + 'a');
        } else if (isLetterOrDigit(c) || c == '_' || c == '.' || c == '-') {
            text += c;
        } else if (c == ' ') {
            text += '_';
        } else if (isPrintable(c)) {
            text.append(1, '\\').append(1, c);
        } else {
            return std::nullopt;
        }
    }
    return text;
}

std::string filledComponent(const Pieces& component, const IdentityValues& values) {
    std::string text;
    for (const Template::Piece& piece : component) {
        if (!piece.variable) {
            text.append(piece.text);
            continue;
        }
        const std::optional<std::string_view> value = values(piece.text);
        const std::optional<std::string> quoted =
            value && !value->empty() ? quotedForCpe(*value) : std::nullopt;
        if (!quoted) return "*";
        text.append(*quoted);
    }
    // "-" alone means that the product has no such part.
    const bool literal = std::ranges::none_of(component, &Template::Piece::variable);
    return text == "-" && !literal ? "\\-" : text;
}

std::string filledCpe(const Template& text, const IdentityValues& values) {
    std::string cpe;
    for (const Pieces& component : componentsOf(piecesOf(text)))
        cpe.append(cpe.empty() ? "" : ":").append(filledComponent(component, values));
    return cpe;
}

// In the path of a package URL, a slash separates a namespace from a name.
void appendPercentEncoded(std::string& url, std::string_view value, bool inPath) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char c : value) {
        const bool plain = isLetterOrDigit(c) ||
                           std::string_view("-._~:").find(c) != std::string_view::npos ||
                           (inPath && c == '/');
        if (plain) {
            url += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        url += '%';
        url += kDigits[byte >> 4U];
        url += kDigits[byte & 0xFU];
    }
}

std::optional<std::string> filledPurl(const Template& text, const IdentityValues& values) {
    const Pieces pieces = piecesOf(text);
    std::string url;
    bool inPath = true;
    for (const Template::Piece& piece : pieces) {
        if (!piece.variable) {
            url.append(piece.text);
            inPath = inPath && piece.text.find_first_of("@?#") == std::string_view::npos;
            continue;
        }
        const std::optional<std::string_view> value = values(piece.text);
        if (!value || value->empty()) return std::nullopt;
        const bool whole = pieces.size() == 1 && value->starts_with(kPurlStart);
        if (whole) return std::string(*value);
        appendPercentEncoded(url, *value, inPath);
    }
    return url;
}

std::optional<std::string> problemOfCpe(const Template& text) {
    if (!text.source().starts_with(kCpeStart)) return "does not start with \"cpe:2.3:\"";
    std::vector<Pieces> components = componentsOf(piecesOf(text));
    components.erase(components.begin(), components.begin() + 2);
    if (components.size() != kCpeComponents)
        return "has " + std::to_string(components.size()) + " components after \"cpe:2.3:\", not 11";
    const auto sample = [](std::string_view) { return std::optional<std::string_view>("1"); };
    const std::string part = filledComponent(components.front(), sample);
    if (part != "a" && part != "o" && part != "h") return "has a part that is not a, o or h";
    for (const Pieces& component : components) {
        const std::string value = filledComponent(component, sample);
        if (!isCpeComponent(value)) return "has the invalid component \"" + value + "\"";
    }
    return std::nullopt;
}

std::optional<std::string> problemOfPurl(const Template& text) {
    const Pieces pieces = piecesOf(text);
    if (pieces.size() == 1 && pieces.front().variable) return std::nullopt;
    const auto sample = [](std::string_view) { return std::optional<std::string_view>("1"); };
    std::string url = filledPurl(text, sample).value_or("");
    if (!url.starts_with(kPurlStart)) return "does not start with \"pkg:\"";
    for (const char c : url) {
        if (!isPrintable(c)) return "has a character that must be percent-encoded";
    }
    const std::size_t typeEnd = url.find('/');
    const std::string type = url.substr(kPurlStart.size(), typeEnd - kPurlStart.size());
    const auto isOfType = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '+' || c == '-';
    };
    if (typeEnd == std::string::npos || type.empty() || !std::ranges::all_of(type, isOfType))
        return "has no type in lower-case letters before a \"/\"";
    const std::string path = url.substr(typeEnd + 1, url.find_first_of("@?#", typeEnd) - typeEnd - 1);
    if (path.empty() || path.ends_with('/')) return "has no name";
    return std::nullopt;
}

}  // namespace

std::string_view nameOf(Identity::Kind kind) {
    return kind == Identity::Kind::Cpe ? "Cpe" : "Purl";
}

std::optional<std::string> problemOf(const Identity& identity) {
    return identity.kind == Identity::Kind::Cpe ? problemOfCpe(identity.text) : problemOfPurl(identity.text);
}

std::optional<std::string> filled(const Identity& identity, const IdentityValues& values) {
    if (identity.kind == Identity::Kind::Purl) return filledPurl(identity.text, values);
    return filledCpe(identity.text, values);
}

}  // namespace toolkit::quorvis
