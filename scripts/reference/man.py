"""Turns Markdown into man(7): python3-markdown parses it, and this writes what it has parsed as a man page."""
import re
import textwrap
import xml.etree.ElementTree as ElementTree

import markdown

EXTENSIONS = ["tables", "fenced_code", "def_list", "sane_lists"]
LITERAL = str.maketrans({"\\": "\\e", "-": "\\-", "'": "\\(aq", "`": "\\(ga", "^": "\\(ha", "~": "\\(ti"})
PROSE = str.maketrans({"\\": "\\e", "'": "\\(aq", "`": "\\(ga", "^": "\\(ha", "~": "\\(ti"})


def ascii_only(text):
    return "".join(c if ord(c) < 128 else f"\\[u{ord(c):04X}]" for c in text)


def literal(text):
    return ascii_only(text.translate(LITERAL))


def prose(text):
    return ascii_only(text.translate(PROSE))


def code_span(text):
    # A long path may be broken behind a slash.
    return "\\fB" + re.sub(r"([/,;])(?=[^/])", r"\1\\:", literal(text)) + "\\fR"


def protected(line):
    """A line of text that begins like a request is text all the same."""
    return "\\&" + line if line[:1] in (".", "'") else line


class Writer:
    def __init__(self):
        self.lines = []
        self.fresh = True  # nothing stands below the current heading yet

    def line(self, text):
        self.lines.append(text)

    def text(self, text):
        text = re.sub(r"\s+", " ", text).strip()
        if text:
            self.lines.extend(map(protected, textwrap.wrap(text, 78, break_long_words=False, break_on_hyphens=False)))

    def paragraph(self):
        if not self.fresh:
            self.line(".PP")
        self.fresh = False


def inline(element):
    """The text of an element, with fonts."""
    parts = [prose(element.text or "")]
    for child in element:
        parts.append(inline_element(child))
        parts.append(prose(child.tail or ""))
    return "".join(parts)


def inline_element(element):
    if element.tag == "code":
        return code_span("".join(element.itertext()))
    if element.tag == "em":
        return "\\fI" + inline(element) + "\\fR"
    if element.tag == "strong":
        return "\\fB" + inline(element) + "\\fR"
    if element.tag == "a" and element.get("href", "").startswith("http") and element.text != element.get("href"):
        return inline(element) + " <" + literal(element.get("href")) + ">"
    if element.tag == "br":
        return " "
    return inline(element)


def write_code(out, element):
    out.paragraph()
    out.line(".RS 4")
    out.line(".nf")
    for line in "".join(element.itertext()).rstrip("\n").split("\n"):
        out.line(protected(literal(line)) if line else "\\&")
    out.line(".fi")
    out.line(".RE")


def write_item(out, item):
    """The content of a list item: text, which may be followed by blocks."""
    lead = ElementTree.Element("span")
    lead.text = item.text
    rest = list(item)
    while rest and rest[0].tag not in ("p", "ul", "ol", "pre", "dl", "table"):
        lead.append(rest.pop(0))
    out.fresh = True
    if inline(lead).strip():
        out.text(inline(lead))
        out.fresh = False
    elif rest and rest[0].tag == "p":
        out.text(inline(rest.pop(0)))
        out.fresh = False
    if rest:
        out.line(".RS")
        out.fresh = True
        for child in rest:
            write_block(out, child)
        out.line(".RE")


def write_list(out, element):
    for number, item in enumerate(element, 1):
        out.line(f".IP {number}. 4" if element.tag == "ol" else ".IP \\(bu 2")
        write_item(out, item)
    out.fresh = False


def write_definitions(out, element):
    for child in element:
        if child.tag == "dt":
            out.line(".TP")
            out.text(inline(child))
        else:
            write_item(out, child)
    out.fresh = False


def write_table(out, element):
    """Each row becomes an entry: terminals are too narrow for the tables of the pages."""
    heads = [inline(cell).strip() for cell in element.iter("th")]
    for row in element.find("tbody"):
        cells = [inline(cell).strip() for cell in row]
        out.line(".TP")
        out.text(cells[0] if cells[0].startswith("\\fB") else f"\\fB{cells[0] or '-'}\\fR")
        filled = [(head, cell) for head, cell in zip(heads[1:], cells[1:]) if cell]
        if len(filled) <= 1 or not any(heads[1:]):
            out.text("; ".join(cell for _, cell in filled) or "\\&")
        else:
            out.text("; ".join(f"{head}: {cell}" if head else cell for head, cell in filled))
    out.fresh = False


def write_block(out, element):
    if element.tag in ("h2", "h3", "h4", "h5"):
        text = "".join(element.itertext())
        out.line((".SH " if element.tag == "h2" else ".SS ") + '"' + prose(text.upper() if element.tag == "h2" else text) + '"')
        out.fresh = True
    elif element.tag == "p":
        text = inline(element)
        if text.strip():  # a picture has none
            out.paragraph()
            out.text(text)
    elif element.tag == "pre":
        write_code(out, element)
    elif element.tag in ("ul", "ol"):
        write_list(out, element)
    elif element.tag == "dl":
        write_definitions(out, element)
    elif element.tag == "table":
        write_table(out, element)
    elif element.tag != "h1":
        raise SystemExit(f"man pages cannot show the element {element.tag}")


def man_page(name, section, date, version, manual, text):
    """The man page whose sections are the headings of second level of the text."""
    out = Writer()
    out.line(f'.TH {name} {section} {date} "zav {version}" "{manual}"')
    out.line(".ad l")
    out.line(".nh")
    html = markdown.markdown(re.sub(r"<!--.*?-->", "", text, flags=re.S), extensions=EXTENSIONS)
    for element in ElementTree.fromstring(f"<page>{html}</page>"):
        write_block(out, element)
    return "\n".join(out.lines) + "\n"
