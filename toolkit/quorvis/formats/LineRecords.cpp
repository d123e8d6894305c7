// Formats of lines: ini files, unit files, header fields.
#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/Records.h"

namespace toolkit::quorvis {

namespace {

std::string_view withoutQuotes(std::string_view value) {
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

// Passes sections on as an object of objects. All keys of a section are between its header and the next one.
class Sections {
  public:
    Sections(const RecordRequest& request, const ProgressCheck& checkProgress)
        : collector_(request, checkProgress) {
        collector_.open(false);
        begin("");
    }

    // "[name]". Keys below a header without a name are in no section.
    void header(std::string_view line) {
        collector_.close();
        line.remove_prefix(1);
        const std::string_view name = trimmed(takeField(line, ']'));
        named_ = !name.empty();
        begin(name);
    }

    void value(std::string_view key, std::string_view text) {
        if (!named_) return;
        collector_.key(key);
        collector_.scalar(text);
    }

    Records takeRecords() {
        collector_.close();
        collector_.close();
        return collector_.takeRecords();
    }

  private:
    void begin(std::string_view name) {
        collector_.key(name);
        collector_.open(false);
    }

    RecordCollector collector_;
    bool named_ = true;
};

bool isComment(std::string_view line) {
    return line.front() == ';' || line.front() == '#';
}

// Passes a unit's line on, with what continued it.
void passUnitLine(std::string_view line, Sections& sections) {
    line = trimmed(line);
    if (line.empty()) return;
    if (line.front() == '[') {
        sections.header(line);
        return;
    }
    const std::size_t separator = line.find('=');
    if (separator == std::string_view::npos) return;
    sections.value(trimmed(line.substr(0, separator)), trimmed(line.substr(separator + 1)));
}

bool isFieldName(std::string_view text) {
    return !text.empty() && text.find_first_of(" \t") == std::string_view::npos;
}

// Reads paragraphs of header fields.
class HeaderReader {
  public:
    // `separator` stands for a line break within a field.
    HeaderReader(const RecordRequest& request, const ProgressCheck& checkProgress, std::string_view separator)
        : collector_(request, checkProgress), checkProgress_(checkProgress), separator_(separator) {}

    Records read(std::string_view text) {
        collector_.open(true);
        for (std::string_view line; nextLine(text, line);) {
            if (checkProgress_) checkProgress_();
            if (line.empty()) {
                endParagraph();
            } else if (line.front() == ' ' || line.front() == '\t') {
                continueField(line);
            } else {
                beginField(line);
            }
        }
        endParagraph();
        collector_.close();
        return collector_.takeRecords();
    }

  private:
    void beginField(std::string_view line) {
        endField();
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos || !isFieldName(line.substr(0, colon))) return;
        if (!open_) collector_.open(false);
        open_ = true;
        name_ = kest::lowerCase(line.substr(0, colon));
        value_ = separator_.empty() ? line.substr(colon + 1) : trimmed(line.substr(colon + 1));
    }

    // Manifests have one blank at the start of a line that is not part of the value.
    void continueField(std::string_view line) {
        if (name_.empty()) return;
        if (separator_.empty()) {
            value_.append(line.substr(1));
        } else {
            value_.append(value_.empty() ? "" : separator_).append(trimmed(line));
        }
    }

    void endField() {
        if (name_.empty()) return;
        collector_.key(name_);
        collector_.scalar(trimmed(value_));
        name_.clear();
    }

    void endParagraph() {
        endField();
        if (open_) collector_.close();
        open_ = false;
    }

    RecordCollector collector_;
    const ProgressCheck& checkProgress_;
    std::string_view separator_;
    bool open_ = false;  // whether a paragraph is open
    std::string name_;   // of the field that is read; empty if there is none
    std::string value_;
};

}  // namespace

Records readIniRecords(std::string_view text, const RecordRequest& request,
                       const ProgressCheck& checkProgress) {
    Sections sections(request, checkProgress);
    for (std::string_view line; nextLine(text, line);) {
        if (checkProgress) checkProgress();
        line = trimmed(line);
        if (line.empty() || isComment(line)) continue;
        if (line.front() == '[') {
            sections.header(line);
            continue;
        }
        const std::size_t separator = line.find_first_of("=:");
        if (separator == std::string_view::npos) continue;
        sections.value(trimmed(line.substr(0, separator)),
                       withoutQuotes(trimmed(line.substr(separator + 1))));
    }
    return sections.takeRecords();
}

Records readUnitRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress) {
    Sections sections(request, checkProgress);
    std::string whole;
    for (std::string_view line; nextLine(text, line);) {
        if (checkProgress) checkProgress();
        const std::string_view content = trimmed(line);
        // Comments may be between the lines of a value.
        if (!content.empty() && isComment(content)) continue;
        const bool continued = line.ends_with('\\');
        if (continued) line.remove_suffix(1);
        whole.append(whole.empty() ? line : trimmed(line));
        if (continued) {
            whole += ' ';
            continue;
        }
        passUnitLine(whole, sections);
        whole.clear();
    }
    passUnitLine(whole, sections);
    return sections.takeRecords();
}

Records readHeaderRecords(std::string_view text, const RecordRequest& request,
                          const ProgressCheck& checkProgress) {
    return HeaderReader(request, checkProgress, " ").read(text);
}

Records readManifestRecords(std::string_view text, const RecordRequest& request,
                            const ProgressCheck& checkProgress) {
    return HeaderReader(request, checkProgress, "").read(text);
}

}  // namespace toolkit::quorvis
