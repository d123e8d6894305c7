#include "cli/suggest/Draft.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <tuple>

#include "cli/scan/PackageUrl.h"
#include "cli/scan/Xml.h"
#include "cli/terminal/PrintableText.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxListed = 20;

std::string attribute(std::string_view text) {
    return escapeXml(text);
}

// A comment must not contain two hyphens.
std::string commentText(std::string_view text) {
    std::string safe = printable(text);
    for (std::size_t at = safe.find("--"); at != std::string::npos; at = safe.find("--", at))
        safe.insert(at + 1, " ");
    if (safe.ends_with('-')) safe += ' ';
    return safe;
}

std::string escapedPart(std::string_view part) {
    std::string pattern;
    for (const char character : part) {
        if (std::string_view("*?[]{},\\").find(character) != std::string_view::npos) pattern += '\\';
        pattern += character;
    }
    return pattern;
}

// A part of a path in which a version is replaced by a wildcard: "tool-1.2" becomes "tool-*".
std::string partPattern(std::string_view part) {
    const bool isNumber = part.find_first_not_of("0123456789") == std::string_view::npos;
    if (isNumber && !part.empty()) return "*";
    const std::size_t begin = versionBegin(part);
    if (begin == std::string_view::npos) return escapedPart(part);
    std::size_t end = begin;
    while (end < part.size() && ((part[end] >= '0' && part[end] <= '9') || part[end] == '.')) ++end;
    // The dot of an ending such as ".jar" is no part of the version.
    if (end > begin && end < part.size() && part[end - 1] == '.') --end;
    return escapedPart(part.substr(0, begin)) + "*" + escapedPart(part.substr(end));
}

std::string candidateLine(const VersionText& text) {
    return commentText(fmt::format("  {}: {}[{}]{}", text.path, text.before, text.version, text.after)) +
           "\n";
}

std::string fileLine(const MetadataFile& file) {
    return commentText(fmt::format("  {}: {} {} {}", file.path, file.format, file.name, file.version)) + "\n";
}

// Whether the words before the version also precede another version of the same file.
bool isAmbiguous(const VersionText& text, const Findings& findings) {
    return std::any_of(findings.texts.begin(), findings.texts.end(), [&](const VersionText& other) {
        return other.path == text.path && other.version != text.version &&
               other.before.ends_with(text.before);
    });
}

// Whether the text tells which versions of something are meant, and not which version this is.
bool isComparison(const VersionText& text) {
    constexpr std::array<std::string_view, 9> kWords{"than",  "older",   "prior",    "since",  "before",
                                                     "later", "require", "at least", "minimum"};
    const std::string words = lowerCase(text.before + " " + text.after);
    return std::any_of(kWords.begin(), kWords.end(),
                       [&](std::string_view word) { return words.find(word) != std::string::npos; });
}

class DraftWriter {
  public:
    DraftWriter(const DraftSubject& subject, const Findings& findings)
        : subject_(subject), findings_(findings), text_(bestText(findings, subject.product)) {}

    std::string write() const {
        std::string guid = lowerCase(subject_.product);
        for (char& character : guid) {
            const bool allowed = (character >= 'a' && character <= 'z') ||
                                 (character >= '0' && character <= '9') || character == '.' ||
                                 character == '_' || character == '-';
            if (!allowed) character = '-';
        }
        return fmt::format(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!-- A draft for {}. Correct name, publisher, home page and places, and test it on\n"
            "     other versions. What else was found is below.\n"
            "-->\n"
            "<Signatures>\n"
            "<Signature guid=\"draft.{}\" name=\"{}\">\n"
            "  <Metadata>\n"
            "    <Publisher>unknown</Publisher>\n"
            "    <Home>https://example.com/</Home>\n"
            "  </Metadata>\n"
            "{}"
            "</Signature>\n"
            "</Signatures>\n"
            "{}",
            commentText(subject_.path), attribute(guid), attribute(subject_.product), body(), remarks());
    }

  private:
    // A file of the product itself, else its words, else a file that may be that of a part.
    std::string body() const {
        const auto isOwn = [&](const MetadataFile& file) {
            return lowerCase(file.name).find(lowerCase(subject_.product)) != std::string::npos;
        };
        const auto own = std::find_if(findings_.files.begin(), findings_.files.end(), isOwn);
        if (own != findings_.files.end()) return metadataBody(*own);
        if (text_ != nullptr) return textBody(*text_);
        if (!findings_.files.empty()) return metadataBody(findings_.files.front());
        return each(placesPattern(subject_.path), "") + output("");
    }

    static std::string each(const std::string& pattern, const std::string& match) {
        std::string text =
            fmt::format("  <Each><Glob id=\"f\" pattern=\"{}\"/></Each>\n", attribute(pattern));
        if (!match.empty()) text += fmt::format("  <Match>\n{}  </Match>\n", match);
        return text;
    }

    static std::string output(std::string_view version) {
        std::string text = "  <Output>\n";
        if (!version.empty())
            text += fmt::format("    <Variable name=\"version\" value=\"${{v.{}}}\"/>\n", version);
        return text + "    <Variable name=\"path\" value=\"${f.path}\"/>\n  </Output>\n";
    }

    static std::string metadataBody(const MetadataFile& file) {
        const bool isProperty = file.format == "json" || file.format == "properties";
        if (!isProperty) {
            const std::string leaf =
                fmt::format("    <FileVersion id=\"v\" path=\"${{f.path}}\" format=\"{}\"/>\n", file.format);
            return each(placesPattern(file.path), leaf) + output("version");
        }
        std::string leaves = "    <All>\n";
        if (!file.name.empty())
            leaves += fmt::format(
                "      <Property path=\"${{f.path}}\" format=\"{}\" key=\"name\" regex=\"{}\"/>\n",
                file.format, attribute("^" + escapedExpression(file.name) + "$"));
        leaves += fmt::format(
            "      <Property id=\"v\" path=\"${{f.path}}\" format=\"{}\" key=\"version\"/>\n    </All>\n",
            file.format);
        return each(placesPattern(file.path), leaves) + output("value");
    }

    static std::string textBody(const VersionText& text) {
        const char* const leaf = text.isProgram ? "Elf" : "Content";
        const std::string regex = escapedExpression(text.before) + kVersionPattern;
        return each(placesPattern(text.path),
                    fmt::format("    <{0} id=\"v\" path=\"${{f.path}}\" regex=\"{1}\"><Capture group=\"1\" "
                                "name=\"version\"/></{0}>\n",
                                leaf, attribute(regex))) +
               output("version");
    }

    // Everything that was found, for the person who corrects the draft.
    std::string remarks() const {
        std::string text;
        if (!findings_.packages.empty()) {
            text += "<!-- Installed packages of a similar name, which a leaf Package finds:\n";
            for (std::size_t i = 0; i < std::min(kMaxListed, findings_.packages.size()); ++i)
                text += packageLine(findings_.packages[i]);
            text += "-->\n";
        }
        if (!findings_.texts.empty()) {
            text += "<!-- Versions with the text around them:\n";
            for (std::size_t i = 0; i < std::min(kMaxListed, findings_.texts.size()); ++i)
                text += candidateLine(findings_.texts[i]);
            text += "-->\n";
        }
        if (!findings_.files.empty()) {
            text += "<!-- Files that state a version:\n";
            for (std::size_t i = 0; i < std::min(kMaxListed, findings_.files.size()); ++i)
                text += fileLine(findings_.files[i]);
            text += "-->\n";
        }
        if (findings_.texts.empty() && findings_.files.empty()) text += "<!-- No version was found. -->\n";
        return text;
    }

    static std::string packageLine(const std::string& purl) {
        const std::optional<PackageUrl> url = parsePackageUrl(purl);
        if (!url) return "";
        return commentText(fmt::format("  <Package id=\"p\" name=\"{}\"/> ({})", attribute(url->name),
                                       url->version)) +
               "\n";
    }

    const DraftSubject& subject_;
    const Findings& findings_;
    const VersionText* text_;
};

}  // namespace

std::string placesPattern(const std::string& path) {
    constexpr std::array<std::string_view, 8> kDirectories{"/bin",      "/sbin",          "/usr/bin",
                                                           "/usr/sbin", "/usr/local/bin", "/usr/local/sbin",
                                                           "/opt/bin",  "/usr/games"};
    const std::size_t slash = path.rfind('/');
    const std::string directory = path.substr(0, slash);
    if (std::find(kDirectories.begin(), kDirectories.end(), directory) != kDirectories.end())
        return "/{bin,sbin,usr/bin,usr/sbin,usr/local/bin,usr/local/sbin,opt/*/bin,opt/*/sbin}/" +
               partPattern(path.substr(slash + 1));
    std::string pattern;
    for (std::size_t begin = 1; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        pattern += "/" + partPattern(std::string_view(path).substr(begin, end - begin));
        begin = end + 1;
    }
    return pattern;
}

const VersionText* bestText(const Findings& findings, const std::string& product) {
    std::map<std::string, int> count;
    for (const VersionText& text : findings.texts) ++count[text.version];
    const VersionText* best = nullptr;
    const auto score = [&](const VersionText& text) {
        const bool named = lowerCase(text.before).find(lowerCase(product)) != std::string::npos;
        return std::tuple(named, !isAmbiguous(text, findings), count[text.version],
                          -static_cast<int>(text.before.size()));
    };
    for (const VersionText& text : findings.texts) {
        if (isComparison(text)) continue;
        if (best == nullptr || score(text) > score(*best)) best = &text;
    }
    return best;
}

std::string draftText(const DraftSubject& subject, const Findings& findings) {
    return DraftWriter(subject, findings).write();
}

}  // namespace zavcli
