"""Reads what a program prints with --help, and writes it as Markdown."""
import re
import subprocess
from dataclasses import dataclass, field

MARKDOWN = re.compile(r"([\\*_<&\[\]`|#])")


def escape(text):
    """Text that Markdown shows as it is."""
    return MARKDOWN.sub(lambda match: {"<": "&lt;", "&": "&amp;"}.get(match[1], "\\" + match[1]), text)


@dataclass
class Help:
    summary: str = ""
    usage: list = field(default_factory=list)
    lists: dict = field(default_factory=dict)  # "Options" -> [(names, text)]; also "Positionals", "Subcommands"
    notes: list = field(default_factory=list)  # the blocks of lines below the lists


def help_text(program, *arguments):
    run = subprocess.run([program, *arguments, "--help"], capture_output=True, text=True, timeout=60)
    if run.returncode != 0:
        raise SystemExit(f"{program} {' '.join(arguments)} --help ended with status {run.returncode}: {run.stderr}")
    return run.stdout


def read_entries(lines):
    """Lists such as "  -g,--group GROUP ...    Scan only this group". Text may begin on the next line."""
    entries = []
    for line in lines:
        line = re.sub(r"^( +-\w,) +(--)", r"\1\2", line)
        begin = re.match(r" {1,6}(\S.*?)(?: {2,}(\S.*))?$", line)
        if begin and len(line) - len(line.lstrip()) <= 6:
            entries.append([begin[1], begin[2] or ""])
        elif entries:
            entries[-1][1] = (entries[-1][1] + " " + line.strip()).strip()
    return [tuple(entry) for entry in entries]


def read_help(text):
    result = Help()
    current = None
    listed = {}
    for block in re.split(r"\n\s*\n", text.strip("\n")):
        lines = block.split("\n")
        head = re.fullmatch(r"(options|positionals|subcommands|commands):", lines[0].strip(), re.I)
        if head:
            current = {"commands": "Subcommands", "positionals": "Arguments"}.get(head[1].lower(), head[1].capitalize())
            listed[current] = lines[1:]
            continue
        if not result.usage:
            for line in lines:
                if line.lower().startswith("usage:") or (result.usage and line.startswith(" ")):
                    result.usage.append(re.sub(r"(?i)^usage:", "", line).strip())
                else:
                    result.summary = (result.summary + " " + line.strip()).strip()
            continue
        if all(line.startswith(" ") for line in lines) and lines[0].lstrip().startswith("-"):
            listed.setdefault(current or "Options", []).extend(lines)
            continue
        result.notes.append(lines)
    result.usage = [line for line in result.usage if line]
    result.lists = {name: read_entries(lines) for name, lines in listed.items()}
    return result


def definitions(entries):
    return "\n".join(f"`{names}`\n:   {escape(text)}\n" if text else f"`{names}`\n" for names, text in entries)


def note(lines):
    """A block below the lists: sentences, or a heading such as "Formats:" with entries below it."""
    text = ""
    sentences = []
    while lines and not (re.fullmatch(r"[A-Z][\w ]*:", lines[0]) and lines[1:2] and lines[1].startswith(" ")):
        if lines[0].startswith("  "):
            break
        sentences.append(lines.pop(0))
    joined = " ".join(sentences)
    status = re.match(r"Exit status: (.*)", joined)
    if status:
        return text + "## Exit status\n\n" + escape(status[1][0].upper() + status[1][1:]) + "\n"
    text += escape(joined) + "\n\n" if joined else ""
    if lines and re.match(r" +[A-Z]+_\w+=", lines[0]):
        text = "## Environment\n\n" + text
    if lines and not lines[0].startswith(" "):
        text += "## " + lines.pop(0).rstrip(":") + "\n\n"
    if lines:
        text += definitions(read_entries(lines))
    return text
