"""What the scanner wrote, and what its documentation says of the fields."""
import os
import re
import xml.etree.ElementTree as ElementTree

REPOSITORY = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../.."))
GROUPS_PAGE = os.path.join(REPOSITORY, "docs/hardware-groups.md")


def read(document):
    """{group: [{field: value}]}"""
    inventory = {}
    for instance in ElementTree.fromstring(document):
        inventory.setdefault(instance.tag, []).append({field.tag: field.text or "" for field in instance})
    return inventory


def fields_of_page():
    """(group, field, meaning) of every row."""
    with open(GROUPS_PAGE, encoding="utf-8") as page:
        group = ""
        for line in page:
            heading = re.match(r"## \d+ (\w+)$", line)
            row = re.match(r"\| (\w+) \| (.*) \|$", line)
            if heading:
                group = heading[1]
            elif row and row[1] != "field":
                yield group, row[1], row[2]


def groups():
    """The names of all groups, in the order of the page."""
    return list(dict.fromkeys(group for group, _, _ in fields_of_page()))


def root_only_fields():
    return {(group, field) for group, field, meaning in fields_of_page() if "root only" in meaning}
