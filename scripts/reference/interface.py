"""Reads include/zav.h: its rules, types, groups, return codes and functions, with their comments."""
import re
from dataclasses import dataclass, field


@dataclass
class Function:
    name: str
    declaration: str  # as it stands in the header, without ZAV_EXPORT
    section: str      # "The library handle", "Hardware", "Software"
    text: list = field(default_factory=list)        # paragraphs
    parameters: list = field(default_factory=list)  # (name, text)
    returns: str = ""
    example: list = field(default_factory=list)     # lines of code


@dataclass
class Interface:
    version: str
    rules: list      # (number, heading, text)
    types: list      # (name, declaration, Function-like comment)
    codes: list      # (name, number, text)
    groups: list     # (name, number, text)
    functions: list


def comment_lines(comment):
    """The lines of a comment without its frame; what is indented stays indented."""
    lines = comment.strip().removeprefix("/*").removesuffix("*/").rstrip().split("\n")
    return [re.sub(r"^ ?\*? ?", "", line.rstrip()) if number else line.strip() for number, line in enumerate(lines)]


def read_comment(comment, function):
    """Fills the function with what its comment says."""
    column = 0      # where the text of the current parameter begins
    place = "text"
    paragraph = []
    for line in comment_lines(comment):
        indent = len(line) - len(line.lstrip())
        parameter = re.match(r"(\w+)  +(\S.*)", line)
        if place == "parameter" and indent >= column and line.strip():
            name, text = function.parameters[-1]
            function.parameters[-1] = (name, text + " " + line.strip())
        elif parameter and re.search(r"\b%s\b" % parameter[1], function.declaration):
            function.parameters.append((parameter[1], parameter[2]))
            column = parameter.start(2)
            place = "parameter"
        elif indent >= 4:
            function.example.append(line[4:])
        elif line.startswith("Returns ") or place == "returns":
            function.returns += line + " "
            place = "returns"
        else:
            paragraph.append(line)
            place = "text"
    function.text = [" ".join(paragraph)] if paragraph else []
    function.returns = function.returns.strip()
    return function


def read_enumerators(body):
    entries = re.findall(r"(\w+) = (\d+),?\s*(?:/\*\s*(.*?)\s*\*/)?", body, re.S)
    return [(name, int(number), re.sub(r"\s+", " ", text)) for name, number, text in entries]


def read_rules(head):
    rules = []
    for line in comment_lines(head):
        begin = re.match(r"(\d+)\. ([^.]+)\. (.*)", line)
        if begin:
            rules.append([int(begin[1]), begin[2], begin[3]])
        elif rules:
            rules[-1][2] += " " + line.strip()
    return [tuple(rule) for rule in rules]


def read_functions(header):
    functions = []
    section = ""
    pattern = r"/\* ---- (.*?) -+ \*/|(/\*(?:(?!\*/).)*\*/)\s*ZAV_EXPORT (int (\w+)\([^;]*;)"
    for match in re.finditer(pattern, header, re.S):
        if match[1]:
            section = match[1]
        else:
            declaration = re.sub(r"\n\s+", "\n" + " " * (len("int (") + len(match[4])), match[3])
            functions.append(read_comment(match[2], Function(match[4], declaration, section)))
    return functions


def read_types(header):
    types = []
    pattern = r"(/\*(?:(?!\*/).)*\*/)\n(typedef [^;]*?(\w+)(?:\)\([^;]*\))?;)"
    for match in re.finditer(pattern, header, re.S):
        declaration = re.sub(r"\s*\n\s+", " ", match[2])
        types.append(read_comment(match[1], Function(match[3], declaration, "Types")))
    return types


def read_codes_function(header):
    comment, declaration, name = re.search(
        r"(/\*(?:(?!\*/).)*\*/)\nstatic inline (const char\* (\w+)\(int code\)) \{", header, re.S).groups()
    return read_comment(comment, Function(name, declaration + ";", "Return codes"))


def read_interface(source):
    with open(f"{source}/include/zav.h", encoding="utf-8") as file:
        header = file.read()
    with open(f"{source}/include/zav_codes.h", encoding="utf-8") as file:
        codes = file.read()
    enums = re.findall(r"enum \{(.*?)\};", header, re.S)
    numbered = [entry for body in enums for entry in read_enumerators(body)]
    interface = Interface(
        version=re.search(r'#define ZAV_VERSION "(.*)"', header)[1],
        rules=read_rules(re.match(r"/\*.*?\*/", header, re.S)[0]),
        types=read_types(header),
        codes=[entry for entry in numbered if not entry[0].startswith("ZAV_HW_")],
        groups=[entry for entry in numbered if entry[0].startswith("ZAV_HW_")],
        functions=read_functions(header))
    interface.functions.append(read_codes_function(codes))
    exported = len(re.findall(r"^ZAV_EXPORT ", header, re.M))
    if exported != len(interface.functions) - 1:
        raise SystemExit(f"include/zav.h: {exported} functions are declared, but {len(interface.functions) - 1} have a comment")
    return interface
