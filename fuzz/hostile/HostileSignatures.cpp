#include "fuzz/hostile/HostileSignatures.h"

#include <array>

namespace hostile {

namespace {

using Texts = std::vector<std::string>;

const Texts kRegexes = {
    "version",
    "([0-9]+)[.]([0-9]+)",
    "^(\\w+)\\s*=\\s*(.*)$",
    "(a|b)*c",
    "(x+x+)+y",
    "((a{0,30}){0,30})b",
    ".*",
    "",
    "(.{1,200}){1,9}z",
    "\\p{L}+",
    "(.*)(.*)(.*)(.*)q",
    "[ab]{900}[cd]",
    "(?s).*x.*y",
    "(((((((a)*)*)*)*)*)*)*",
    "(ab|a)(bc|c)?",
    "$",
    "\\bname\\b",
    "[^\\n]{1,1000}Z",
    "(",
    "${e.name}",
};
const Texts kGlobs = {"/**",
                      "/home/**",
                      "/home/*/*",
                      "/home/**/{a,b,c}*",
                      "/swap/*",
                      "/swap/**/s*",
                      "/odd/**",
                      "/odd/*/*",
                      "/odd/full/*",
                      "/odd/deep/**/*",
                      "/*",
                      "/{var,usr,opt}/**/*.{xml,json,jar}",
                      "/odd/[!a-z]*",
                      "/proc/**",
                      "/odd/loop/loop/loop/*"};
const Texts kVersions = {"1", "1.2.3-rc.1", "999999999999999999999999", "", "a", "1:2~3", "${p.version}"};
const Texts kTests = {"equals", "atLeast", "above", "atMost", "below"};
const Texts kSchemes = {"deb", "rpm", "semver", "pep440", "dotted", "int", "text"};
const Texts kKeys = {"name", "version", "dependencies.a", "/packages/0/name", "a.b.c.d", "0", ""};

// Valid signatures that read every path with every kind of leaf.
std::string plainSignatures(const Texts& paths) {
    const auto signature = [](const std::string& guid, const std::string& leaf) {
        return "<Signature guid=\"plain." + guid + "\" name=\"n\"><Each>" + leaf +
               R"(</Each><Output><Variable name="v" value="${x.path}${x.value}${x.version}${x.match}"/></Output>)"
               "</Signature>";
    };
    std::string text =
        signature("p", R"(<Package id="x" nameRegex=""/>)") + signature("s", R"(<SwidTag id="x"/>)");
    for (const char* const glob : {"/odd/**", "/home/**", "/swap/**", "/usr/*/*"})
        text += signature("g", std::string(R"(<Glob id="x" pattern=")") + glob + "\"/>");
    for (const std::string& path : paths) {
        const auto leaf = [&](const std::string& kind, const std::string& rest) {
            text += signature(kind, "<" + kind + " id=\"x\" path=\"" + path + "\" " + rest + "/>");
        };
        leaf("File", "sha256=\"" + std::string(64, '0') + "\"");
        leaf("Content", "regex=\"version\"");
        for (const char* const format : {"properties", "ini", "shell", "json"})
            leaf("Property", std::string("key=\"version\" format=\"") + format + "\"");
        leaf("Xml", "select=\"/a/b/@c\"");
        leaf("Elf", "regex=\"([0-9]+)\"");
        for (const char* const format : {"jar", "pe", "python-dist"})
            leaf("FileVersion", std::string("format=\"") + format + "\"");
    }
    return text;
}

class Writer {
  public:
    Writer(Random& random, const Texts& paths) : random_(random), paths_(paths) {}

    std::string file() {
        std::string text = "<Signatures>" + plainSignatures(paths_);
        for (std::size_t i = 1 + random_.below(8); i > 0; --i) text += signature(i);
        return text + "</Signatures>";
    }

  private:
    std::string signature(std::size_t number) {
        next_ = 0;
        const std::string guid = "hostile." + std::to_string(number);
        std::string text = "<Signature guid=\"" + guid + "\" name=\"${e.name} " + guid + "\">";
        if (random_.oneIn(3)) text += "<Metadata><a b=\"c\">text</a></Metadata>";
        if (random_.oneIn(2)) text += "<Each>" + leaf("e") + "</Each>";
        text += "<Match>" + condition(0) + "</Match><Output>";
        for (const char* const field :
             {"path", "value", "version", "match", "one", "sha256", "target", "purl"})
            text += std::string("<Variable name=\"") + field + "\" value=\"" + variable(field) + "\"/>";
        return text + "</Output></Signature>";
    }

    std::string variable(const std::string& field) {
        std::string text;
        for (std::size_t i = 1 + random_.below(random_.oneIn(8) ? 500 : 2); i > 0; --i)
            text += "${" + std::string(random_.oneIn(2) ? "e" : "l" + std::to_string(random_.below(4))) +
                    "." + field + "}";
        return text;
    }

    std::string condition(unsigned depth) {
        static const Texts kBranches = {"All", "Any", "Not", "Optional"};
        if (depth > 3 || random_.oneIn(2)) return leaf("l" + std::to_string(next_++));
        const std::string& name = random_.pick(kBranches);
        const bool many = name == "All" || name == "Any";
        std::string text = "<" + name + ">";
        for (std::size_t i = many ? 1 + random_.below(4) : 1; i > 0; --i) text += condition(depth + 1);
        return text + "</" + name + ">";
    }

    std::string attribute(const std::string& name, const std::string& value) {
        return " " + name + "=\"" + value + "\"";
    }
    std::string maybe(const std::string& name, const std::string& value) {
        return random_.oneIn(3) ? attribute(name, value) : std::string();
    }
    std::string path() {
        if (random_.oneIn(4)) return attribute("path", "${e.path}");
        if (random_.oneIn(8)) return attribute("path", "/swap/secret");
        return attribute("path", random_.pick(paths_));
    }
    std::string regex() { return attribute("regex", random_.pick(kRegexes)); }
    std::string tests() {
        return maybe(random_.pick(kTests), random_.pick(kVersions)) + maybe("scheme", random_.pick(kSchemes));
    }

    std::string leaf(const std::string& id) {
        const std::string begin = " id=\"" + id + "\"" + maybe("min", std::to_string(random_.below(3)));
        const std::string capture = R"(<Capture group="1" name="one"/>)";
        const std::string zeros(64, '0');
        switch (random_.below(10)) {
            case 0:
                return "<Package" + begin + attribute("nameRegex", random_.pick(kRegexes)) + tests() + "/>";
            case 1:
                return "<File" + begin + path() + maybe("sha256", zeros) + maybe("owner", "root") + "/>";
            case 2:
            case 3:
                return "<Glob" + begin + attribute("pattern", random_.pick(kGlobs)) + maybe("sha256", zeros) +
                       maybe("kind", "file") + maybe("maxDepth", "64") + "/>";
            case 4:
                return "<Content" + begin + path() + regex() + maybe("flags", "ims") +
                       maybe("maxBytes", "100") + ">" + (random_.oneIn(2) ? capture : "") + "</Content>";
            case 5: {
                static const Texts kFormats = {"properties", "ini", "shell", "json"};
                return "<Property" + begin + path() + attribute("format", random_.pick(kFormats)) +
                       attribute("key", random_.pick(kKeys)) + tests() + "/>";
            }
            case 6:
                return "<Xml" + begin + path() +
                       attribute("select", random_.oneIn(2) ? "/a/b/@c" : "/a/b[2]") + tests() + "/>";
            case 7:
                return "<Elf" + begin + path() + maybe("section", ".rodata") +
                       (random_.oneIn(2) ? regex() : "") + maybe("needed", "libc.so.6") + "/>";
            case 8: {
                static const Texts kFormats = {"jar", "pe", "python-dist"};
                return "<FileVersion" + begin + path() + attribute("format", random_.pick(kFormats)) +
                       tests() + "/>";
            }
            default:
                return "<SwidTag" + begin + maybe("name", "Widget") + tests() + "/>";
        }
    }

    Random& random_;
    const Texts& paths_;
    unsigned next_ = 0;
};

}  // namespace

std::string hostileSignatures(Random& random, const std::vector<std::string>& paths) {
    return Writer(random, paths).file();
}

}  // namespace hostile
