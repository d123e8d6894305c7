#include "cli/suggest/Exploration.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <tuple>

#include "cli/scan/Xml.h"

namespace zavcli {

const char* const kVersionPattern = R"(([0-9]+(?:\.[0-9]+){1,4}(?:-?(?:alpha|beta|rc|p)[0-9]*)?))";

namespace {

constexpr const char* kTextOutput =
    R"(<Output><Variable name="path" value="{path}"/><Variable name="before" value="${{v.before}}"/>)"
    R"(<Variable name="version" value="${{v.version}}"/><Variable name="after" value="${{v.after}}"/></Output>)";
constexpr const char* kCaptures =
    R"(<Capture group="1" name="before"/><Capture group="2" name="version"/><Capture group="3" name="after"/>)";

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// Where a number at the end begins, as in "gcc-12"; npos if there is none or nothing else.
std::size_t trailingNumberBegin(std::string_view name) {
    const std::size_t last = name.find_last_not_of("0123456789");
    return last == std::string_view::npos || last + 1 == name.size() ? std::string_view::npos : last + 1;
}

// A path or pattern in an attribute of a leaf.
std::string attribute(std::string_view text) {
    std::string literal;
    for (const char character : text) {
        if (character == '$') literal += '$';
        literal += character;
    }
    return escapeXml(literal);
}

std::string literalPattern(std::string_view path) {
    std::string pattern;
    for (const char character : path) {
        if (std::string_view("*?[]{},\\").find(character) != std::string_view::npos) pattern += '\\';
        pattern += character;
    }
    return pattern;
}

std::string textSignature(const char* guid, const char* leaf, const std::string& path,
                          const std::string& before) {
    const std::string regex = before + kVersionPattern + R"(([^0-9A-Za-z\x00][ -~]{0,24}|\x00|$))";
    return fmt::format(
        R"(<Signature guid="{0}" name="text"><Each><{1} id="v" path="{2}" regex="{3}">{4}</{1}></Each>{5}</Signature>)",
        guid, leaf, attribute(path), escapeXml(regex), kCaptures,
        fmt::format(fmt::runtime(kTextOutput), fmt::arg("path", attribute(path))));
}

// A signature for each file of a pattern that `leaf`, whose name is `v`, can read.
std::string fileSignature(const char* guid, const std::string& pattern, const std::string& leaves,
                          const std::string& name, const char* format) {
    return fmt::format(
        R"(<Signature guid="{}" name="file"><Each><Glob id="f" pattern="{}" kind="file" maxDepth="3"/></Each>)"
        R"(<Match><All>{}</All></Match><Output><Variable name="path" value="${{f.path}}"/>)"
        R"(<Variable name="product" value="{}"/><Variable name="version" value="${{v.{}}}"/>)"
        R"(<Variable name="format" value="{}"/></Output></Signature>)",
        guid, attribute(pattern), leaves, name,
        std::string_view(format) == "jar" || std::string_view(format) == "python-dist" ? "version" : "value",
        format);
}

std::string propertySignature(const std::string& pattern, const char* format, const char* nameKey) {
    const std::string name =
        fmt::format(R"(<Optional><Property id="n" path="${{f.path}}" format="{}" key="{}"/></Optional>)",
                    format, nameKey);
    return fileSignature(
        "file", pattern,
        fmt::format(
            R"(<Property id="v" path="${{f.path}}" format="{}" key="version" regex="^[0-9]+\.[0-9]"/>{})",
            format, name),
        "${n.value}", format);
}

std::string productSignature(const std::string& pattern, const char* format) {
    return fileSignature("file", pattern,
                         fmt::format(R"(<FileVersion id="v" path="${{f.path}}" format="{}"/>)", format),
                         "${v.name}", format);
}

}  // namespace

std::string productNameOf(const std::string& path) {
    std::string_view name = path;
    while (name.ends_with('/')) name.remove_suffix(1);
    name.remove_prefix(name.rfind('/') + 1);
    for (const std::string_view ending : {".jar", ".exe", ".py", ".sh", ".js", ".tar", ".gz"}) {
        if (name.ends_with(ending)) name.remove_suffix(ending.size());
    }
    name = name.substr(0, name.find(".so"));
    name = name.substr(0, std::min(versionBegin(name), trailingNumberBegin(name)));
    while (name.size() > 1 && std::string_view("-_. ").find(name.back()) != std::string_view::npos)
        name.remove_suffix(1);
    return std::string(name);
}

std::size_t versionBegin(std::string_view text) {
    for (std::size_t i = 1; i + 2 < text.size(); ++i) {
        if (!isDigit(text[i]) || isDigit(text[i - 1])) continue;
        const std::size_t end = std::min(text.find_first_not_of("0123456789", i), text.size());
        if (end + 1 < text.size() && text[end] == '.' && isDigit(text[end + 1])) return i;
    }
    return std::string_view::npos;
}

std::string escapedExpression(std::string_view text) {
    std::string expression;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDigit(text[i])) {
            if (i == 0 || !isDigit(text[i - 1])) expression += "[0-9]+";
            continue;
        }
        if (std::string_view(R"(\.+*?()|[]{}^$)").find(text[i]) != std::string_view::npos) expression += '\\';
        expression += text[i];
    }
    return expression;
}

std::string signaturesForFile(const std::string& path, const std::string& product) {
    const std::string named = fmt::format("((?i:{})[ -~]{{0,30}}?)", escapedExpression(product));
    const std::string labelled =
        R"(((?:[A-Za-z][ -~]{0,24})?(?:[Vv]ersion|VERSION|[Rr]elease)[ :=/"']{1,4}v?))";
    std::string text;
    for (const std::string& before : {named, labelled}) {
        text += textSignature("program", "Elf", path, before);
        text += textSignature("text", "Content", path, before);
    }
    return text;
}

std::string signatureForPackages(const std::string& product) {
    return fmt::format(
        R"-(<Signature guid="packages" name="p"><Each><Package id="p" nameRegex="^{}([-0-9.]|$)"/></Each>)-"
        R"(<Output><Variable name="purl" value="${{p.purl}}"/></Output></Signature>)",
        escapeXml(escapedExpression(product)));
}

std::string signaturesForDirectory(const std::string& path) {
    const std::string directory = literalPattern(path == "/" ? "" : path);
    std::string text;
    text += propertySignature(directory + "/{,*/}{package,composer}.json", "json", "name");
    text += propertySignature(directory + "/{,conf/,lib/}*.properties", "properties", "name");
    text += productSignature(directory + "/{,*/}{*.dist-info/METADATA,*.egg-info/PKG-INFO}", "python-dist");
    text += productSignature(directory + "/{,lib/,libs/}*.jar", "jar");
    text += fmt::format(
        R"(<Signature guid="text" name="text"><Each><Glob id="f" pattern="{}" kind="file"/></Each>)"
        R"(<Match><Content id="v" path="${{f.path}}" regex="{}" flags="m" maxBytes="4096">{}</Content></Match>{}</Signature>)",
        attribute(directory + "/{release,RELEASE,VERSION,version,VERSION.txt,version.txt,Version.txt}"),
        escapeXml(fmt::format(R"(^([A-Za-z_. ]{{0,40}}[=: "']{{0,4}}v?){}(["' ][ -~]{{0,24}})?$)",
                              kVersionPattern)),
        kCaptures, fmt::format(fmt::runtime(kTextOutput), fmt::arg("path", "${f.path}")));
    text += fmt::format(
        R"(<Signature guid="programs" name="p"><Each><Glob id="f" pattern="{}" kind="file"/></Each>)"
        R"(<Match><Elf path="${{f.path}}" section=".rodata"/></Match>)"
        R"(<Output><Variable name="path" value="${{f.path}}"/></Output></Signature>)",
        attribute(directory + "/{,bin/,sbin/,lib/}*"));
    return text;
}

void addFindings(Findings& findings, const std::vector<MatchedSignature>& results) {
    for (const MatchedSignature& match : results) {
        const auto value = [&](const char* name) { return valueOf(match.variables, name); };
        if (match.guid == "programs")
            findings.programs.push_back(value("path"));
        else if (match.guid == "packages")
            findings.packages.push_back(value("purl"));
        else if (match.guid == "file")
            findings.files.push_back({value("path"), value("format"), value("product"), value("version")});
        else
            findings.texts.push_back(
                {value("path"), value("before"), value("version"), value("after"), match.guid == "program"});
    }
    // A program is found by both kinds of signatures. Programs come first, so that they stay.
    const auto key = [](const VersionText& text) { return std::tie(text.path, text.before, text.version); };
    std::stable_sort(findings.texts.begin(), findings.texts.end(),
                     [](const auto& one, const auto& other) { return one.isProgram > other.isProgram; });
    std::stable_sort(findings.texts.begin(), findings.texts.end(),
                     [&](const auto& one, const auto& other) { return key(one) < key(other); });
    const auto isSame = [&](const auto& one, const auto& other) { return key(one) == key(other); };
    findings.texts.erase(std::unique(findings.texts.begin(), findings.texts.end(), isSame),
                         findings.texts.end());
}

}  // namespace zavcli
