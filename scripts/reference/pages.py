"""What the man pages and the reference of the site contain, as Markdown."""
import os
import re
from dataclasses import dataclass

from reference.program_help import definitions, escape, help_text, note, read_help

MANUALS = {"1": "User Commands", "3": "Library Functions", "5": "File Formats", "8": "System Administration"}

# Which page shows a section of docs/command.md. A section with the name of a subcommand is in its page, every other one in zav(1).
SECTIONS_OF_COMMANDS = {
    "Status of each group": "zav-hw",
    "Hiding and omitting values": "zav-hw",
    "Software": "zav-sw",
    "Undecided signatures": "zav-sw",
    "Bills of materials": "zav-sbom",
    "Differences": "zav-diff",
    "Archives of what a scan reads": "zav-capture",
}

FILES = """`/etc/zav/zav.ini`
:   where the toolkit of this machine is, and which products use it; see zav.ini(5)

`/usr/share/zav/signatures`
:   the signatures that `zav sw` and `zav sbom` evaluate unless others are named
"""


@dataclass
class Page:
    name: str
    section: str
    summary: str    # what follows the name in the section NAME
    body: str       # Markdown, sections as headings of second level
    see_also: list  # "zav(1)"

    @property
    def title(self):
        return f"{self.name}({self.section})"

    def markdown(self):
        see_also = ", ".join(f"**{name}**{name_section}" for name, name_section in
                             (re.fullmatch(r"(.*)(\(\d\))", entry).groups() for entry in self.see_also if entry != self.title))
        return f"## Name\n\n{self.name} - {self.summary}\n\n{self.body.strip()}\n\n## See also\n\n{see_also}\n"


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def sections(text):
    """The sections of second level of a page: (heading, content)."""
    parts = re.split(r"^## (.*)\n", text, flags=re.M)
    return list(zip(parts[1::2], parts[2::2]))


def without_contents(text):
    """A page without its title and its list of contents, which links to the page itself."""
    text = re.sub(r"^# .*\n", "", text)
    return re.sub(r"(?m)^- \[[^\]]*\]\(#.*\n(?:  .*\n)*", "", text)


def sentence_start(text):
    text = text.strip().rstrip(".")
    return text[:1].lower() + text[1:] if text[1:2].islower() or text[1:2] == " " else text


# ---- Programs

def program_page(name, section, text, more, see_also):
    """The page of a program or subcommand: its help, and what the documentation adds to it."""
    parsed = read_help(text)
    usage = "\n".join(re.sub(r"^(zav)-?(\S*)", r"\1\2", line) for line in parsed.usage)
    body = f"## Synopsis\n\n```\n{usage}\n```\n\n"
    notes = "\n".join(note(list(lines)) for lines in parsed.notes)
    # What stands before the first heading of the notes describes the program.
    prose, heading, rest = notes.partition("## ")
    body += f"## Description\n\n{escape(parsed.summary)}{'' if parsed.summary.endswith('.') else '.'}\n\n{prose}\n"
    for title, entries in parsed.lists.items():
        if title == "Subcommands":
            entries = [(names, f"{entry}; see {name}-{names}({section})") for names, entry in entries]
        body += f"## {title}\n\n{definitions(entries)}\n"
    rest = heading + rest
    status = re.search(r"## Exit status\n.*?(?=\n## |\Z)", rest, re.S)
    if status:
        rest = rest.replace(status[0], "")
    body += rest + "\n" + more + "\n" + (status[0] if status else "") + "\n"
    return Page(name, section, sentence_start(parsed.summary.split(". ")[0]), body, see_also)


def command_pages(zav, source):
    overview = read_help(help_text(zav))
    names = [re.split(r"[\s,]", entry[0])[0] for entry in overview.lists.get("Subcommands", [])]
    if "hw" not in names:
        raise SystemExit(f"{zav} --help lists no subcommands")
    more = {}
    for heading, content in sections(read(f"{source}/docs/command.md")):
        if heading != "Exit status":
            own = f"zav-{heading.lower()}" if heading.lower() in names else "zav"
            page = SECTIONS_OF_COMMANDS.get(heading, own)
            more[page] = more.get(page, "") + f"## {heading}\n\n{content}\n"
        else:
            more["zav"] = more.get("zav", "") + f"## Exit status in detail\n\n{content}\n"
    related = ["zav(1)"] + [f"zav-{name}(1)" for name in names]
    files = f"## Files\n\n{FILES}\n"
    pages = [program_page("zav", "1", help_text(zav), more.get("zav", "") + files,
                          related + ["quorvah(8)", "quorvis(8)", "zav.ini(5)", "zav-signatures(5)", "zav(3)"])]
    for name in names:
        page = f"zav-{name}"
        others = ["zav-signatures(5)"] if name in ("sw", "sbom") else []
        pages.append(program_page(page, "1", help_text(zav, name), more.get(page, ""), related + others + ["zav.ini(5)"]))
    return pages


def scanner_page(name, program, text):
    related = {"quorvah": ["quorvis(8)", "zav-hw(1)"], "quorvis": ["quorvah(8)", "zav-sw(1)", "zav-signatures(5)"]}
    return program_page(name, "8", help_text(program), f"## Details\n\n{text}", related[name] + ["zav.ini(5)", "zav(3)"])


# ---- File formats

def format_pages(source):
    scanners = dict(sections(read(f"{source}/docs/scanners.md")))
    language = without_contents(read(f"{source}/docs/signature-language.md"))
    location = Page("zav.ini", "5", "where the inventory toolkit of this machine is",
                    f"## Description\n\n{scanners['The location file']}",
                    ["zav-doctor(1)", "ZAV_init(3)", "quorvah(8)", "quorvis(8)"])
    signatures = Page("zav-signatures", "5", "the language in which software is described",
                      f"## Description\n\n{language}", ["zav-sw(1)", "quorvis(8)", "zav(3)"])
    return [location, signatures]


# ---- The C interface

def marked(text):
    """Text of a comment with names of the interface as code."""
    parts = re.split(r"(`[^`]+`|\*\w+\b|\bZAV_\w+(?:\(\))?|L?\"[^\"]*\"|'[^' ]'|&#\d+;|\\\w+)", text)
    return "".join(part if part.startswith("`") else f"`{part}`" if number % 2 else escape(part)
                   for number, part in enumerate(parts))


def code(lines):
    return "```c\n" + "\n".join(lines) + "\n```\n"


def summary_of(function):
    text = re.sub(r"^\*(\w+): ", "", function.text[0])
    text = re.split(r"(?<=[\w)`])[.:;](?: |$)", text)[0]
    return sentence_start(re.sub("[*`]", "", text))


def sentence(text):
    """The description of a getter, "*count: how many ...", as sentences."""
    return re.sub(r"(^|; )(\*\w+): ", lambda match: f"{match[1]}{match[2]} becomes ", text) if text.startswith("*") else text


def codes_of(function, interface):
    """The codes that a function returns, also those of another function to which its comment refers."""
    names = re.findall(r"ZAV_ERROR_\w+", function.returns)
    for other in interface.functions:
        if other is not function and re.search(r"\b%s\b" % other.name, function.returns):
            names += codes_of(other, interface)
    return [entry for entry in interface.codes if entry[0] in names]


def function_markdown(function, interface, level):
    """Description, arguments, result and example of a function."""
    mark = "#" * level
    text = f"{mark} Description\n\n" + "\n\n".join(marked(sentence(part)) for part in function.text) + "\n\n"
    if function.parameters:
        text += "\n".join(f"`{name}`\n:   {marked(part)}\n" for name, part in function.parameters) + "\n"
    if function.returns:
        text += f"{mark} Return value\n\n{marked(function.returns)}\n\n"
        errors = codes_of(function, interface)
        if errors:
            text += f"{mark} Errors\n\n" + "\n".join(
                f"`{name}` ({number})\n:   {escape(meaning)}\n" for name, number, meaning in errors) + "\n"
    if function.example:
        text += f"{mark} Examples\n\n{code(function.example)}\n"
    return text


def declaration_lines(function):
    """The declaration in lines that a terminal of 80 columns shows."""
    head, arguments = re.fullmatch(r"(.*?\()(.*)", re.sub(r"\s+", " ", function.declaration)).groups()
    lines = [head]
    indent = " " * min(len(head), 40)
    for argument in re.findall(r"[^,]+,?", arguments):
        if len(lines[-1]) + len(argument) > 70 and lines[-1] != head:
            lines.append(indent + argument.strip())
        else:
            lines[-1] += argument
    return lines


def header_of(function):
    return "zav_codes.h" if function.name == "ZAV_code_text" else "zav.h"


def neighbours(function, interface):
    same = [other for other in interface.functions if other.section == function.section and other is not function]
    return ["zav(3)"] + [f"{other.name}(3)" for other in same]


def function_page(function, interface):
    body = f"## Synopsis\n\n{code([f'#include <{header_of(function)}>', '', *declaration_lines(function)])}\n"
    body += "Link with `pkg-config --libs zav`.\n\n" if header_of(function) == "zav.h" else ""
    body += function_markdown(function, interface, 2)
    return Page(function.name, "3", summary_of(function), body, neighbours(function, interface))


def type_markdown(kind):
    text = code([kind.declaration]) + "\n" + marked(" ".join(kind.text)) + "\n\n"
    return text + "\n".join(f"`{name}`\n:   {marked(part)}\n" for name, part in kind.parameters) + "\n"


def rules_markdown(interface):
    return "\n".join(f"### {heading}\n\n{marked(text)}\n" for _, heading, text in interface.rules)


def overview_page(interface):
    functions = "\n".join(f"`{function.name}`\n:   {escape(summary_of(function))}\n" for function in interface.functions)
    codes = "\n".join(f"`{name}` ({number})\n:   {escape(text) or 'success'}\n" for name, number, text in interface.codes)
    groups = "\n".join(f"`{name}` ({number})\n:   {marked(text)}\n" for name, number, text in interface.groups)
    body = (f"## Synopsis\n\n{code(['#include <zav.h>'])}\nLink with `pkg-config --libs zav`.\n\n"
            "## Description\n\nA host opens a library handle, then hardware and software contexts on it. A context runs a scanner "
            "of the toolkit and keeps the results until the next run. The following holds for all functions.\n\n"
            f"{rules_markdown(interface)}\n## Types\n\n" + "".join(type_markdown(kind) for kind in interface.types) +
            f"\n## Functions\n\n{functions}\n## Return codes\n\n{codes}\n## Hardware groups\n\n{groups}\n")
    return Page("zav", "3", "the inventory of this machine, hardware and software", body,
                ["ZAV_init(3)", "ZAV_hw_run(3)", "ZAV_sw_evaluate(3)", "ZAV_code_text(3)", "zav(1)", "zav.ini(5)",
                 "zav-signatures(5)"])


def all_pages(interface, source, programs):
    scanners = dict(sections(read(f"{source}/docs/scanners.md")))
    pages = command_pages(f"{programs}/zav", source)
    for name in ("quorvah", "quorvis"):
        if os.path.exists(f"{programs}/{name}"):
            pages.append(scanner_page(name, f"{programs}/{name}", scanners[name]))
    pages += format_pages(source)
    pages.append(overview_page(interface))
    pages += [function_page(function, interface) for function in interface.functions]
    return pages


# ---- The same for the site


def interface_reference(interface):
    """One page for the whole of zav.h."""
    text = f"# The C interface\n\n{code(['#include <zav.h>'])}\nThe library is version {interface.version}.\n\n"
    text += f"## Rules for all functions\n\n{rules_markdown(interface)}\n## Types\n\n"
    text += "".join(type_markdown(kind) for kind in interface.types)
    for section in dict.fromkeys(function.section for function in interface.functions):
        text += f"## {section}\n\n"
        for function in interface.functions:
            if function.section == section:
                text += f"### {function.name}\n\n{code(declaration_lines(function))}\n"
                # The headings would hide the functions in the list of contents.
                text += re.sub(r"(?m)^##### Description\n\n", "", function_markdown(function, interface, 5))
    rows = "\n".join(f"| `{name}` | {number} | {escape(meaning) or 'success'} |" for name, number, meaning in interface.codes)
    text += f"## List of return codes\n\n| name | code | meaning |\n|---|---|---|\n{rows}\n\n"
    rows = "\n".join(f"| `{name}` | {number} | {marked(meaning)} |" for name, number, meaning in interface.groups)
    return text + f"## List of hardware groups\n\n| name | number | group |\n|---|---|---|\n{rows}\n"


def command_reference(source, programs):
    """One page with the help of the command and its subcommands."""
    text = "# The command line\n\nThis is what `--help` prints. [The command for administrators](../command.md) describes the rest.\n\n"
    overview = help_text(f"{programs}/zav")
    names = [re.split(r"[\s,]", entry[0])[0] for entry in read_help(overview).lists["Subcommands"]]
    for name in ["", *names]:
        arguments = [name] if name else []
        text += f"## {'zav ' + name if name else 'zav'}\n\n```text\n{help_text(f'{programs}/zav', *arguments).strip()}\n```\n\n"
    return text
