"""What a machine is known to have, and the comparison with what the scanner says.

A file of expectations has sections and lines:

    # A comment.
    [Storage]                             the group as a whole
    count = 2                             the number of its instances
    [Storage SerialNumber=A-1 Name=sda]   the instance with these values
    Size = 1073741824                     a value
    TotalCapacity = 1000..2000            a number within these limits
    Manufacturer = (none)                 there is no such thing: the value must be empty
    WorldWideName = (not told: reason)    the machine has one, but tells it to nobody: the value must be empty
    [absent Storage Name=fd0]             no instance has these values
    [root Storage Name=sda]               an ordinary user cannot see what follows

Blanks in the values of a selector are written as underscores. {kernel} stands for the release of the guest's kernel.
"""
import re

RIGHT, WRONG, MISSING, UNTOLD = "right", "wrong", "missing", "not told"


class ExpectationFault(Exception):
    """A file of expectations does not have the form that is described above."""


class Expectation:
    def __init__(self, group, selector, field, value, line, root_only=False):
        self.group = group
        self.selector = selector
        self.field = field
        self.value = value
        self.line = line
        self.root_only = root_only

    def place(self):
        return " ".join([self.group] + [f"{field}={value}" for field, value in self.selector.items()])


class Finding:
    """The state of one expectation in one inventory."""

    def __init__(self, expectation, state, found=""):
        self.expectation = expectation
        self.state = state
        self.found = found

    def __str__(self):
        each = self.expectation
        return f"line {each.line}: {each.place()}: {each.field}: expected '{each.value}', the scanner says '{self.found}'"


def read(path, variables):
    with open(path, encoding="utf-8") as file:
        lines = file.read().splitlines()
    expectations = []
    group, selector, kind = "", {}, ""
    for number, line in enumerate(lines, 1):
        line = line.strip()
        if not line or line.startswith("#"):
            continue
        section = re.fullmatch(r"\[(absent |root )?(\w+)((?: \w+=\S+)*)\]", line)
        if section:
            kind, group = section[1] or "", section[2]
            selector = {field: value.replace("_", " ") for field, value in
                        (pair.split("=", 1) for pair in section[3].split())}
            if kind == "absent ":
                expectations.append(Expectation(group, selector, "count", "0", number))
            continue
        field, equals, value = line.partition("=")
        if not equals or not group or kind == "absent ":
            raise ExpectationFault(f"{path}:{number}: neither a section nor 'Field = value'")
        for name, text in variables.items():
            value = value.replace("{" + name + "}", text)
        expectations.append(Expectation(group, selector, field.strip(), value.strip(), number, kind == "root "))
    if not expectations:
        raise ExpectationFault(f"{path}: there are no expectations")
    return expectations


def compare(expectations, inventory, hidden=None):
    """The findings. hidden: for the scan of an ordinary user, the pairs of group and field that only root can see. They may be
    missing; a value that is there must be right even so."""
    findings = [_finding(each, inventory) for each in expectations]
    return [finding for finding in findings
            if hidden is None or finding.state != MISSING or not _is_hidden(finding.expectation, hidden)]


def _is_hidden(expectation, hidden):
    return expectation.root_only or (expectation.group, expectation.field) in hidden


def _finding(expectation, inventory):
    instances = [instance for instance in inventory.get(expectation.group, [])
                 if all(_same(instance.get(field, ""), value) for field, value in expectation.selector.items())]
    if expectation.field == "count":
        found = str(len(instances))
        state = RIGHT if found == expectation.value else MISSING if len(instances) < int(expectation.value) else WRONG
        return Finding(expectation, state, found)
    if not instances:
        return Finding(expectation, MISSING, "(no such instance)")
    if len(instances) > 1:
        return Finding(expectation, WRONG, f"({len(instances)} such instances)")
    if expectation.field not in instances[0]:
        return Finding(expectation, WRONG, "(no such field)")
    found = instances[0][expectation.field]
    if expectation.value == "(none)":
        return Finding(expectation, WRONG if found else RIGHT, found)
    if expectation.value.startswith("(not told: "):
        return Finding(expectation, WRONG if found else UNTOLD, found)
    if not found:
        return Finding(expectation, MISSING)
    return Finding(expectation, RIGHT if _meets(found, expectation.value) else WRONG, found)


def _meets(found, expected):
    limits = re.fullmatch(r"(\d+)\.\.(\d+)", expected)
    if limits:
        return found.isdigit() and int(limits[1]) <= int(found) <= int(limits[2])
    return found == expected


def _same(found, selected):
    return found.replace("_", " ") == selected
