#!/usr/bin/env python3
"""page_program.py PAGE LANGUAGE [OLD NEW]...: prints the program that the code blocks of a page are together.

Blocks of another language, and those marked "complete", are left out. NEW replaces each OLD, so that a test can name its toolkit.
A page that lacks an OLD is refused. In C++ the statements become the body of main.
"""
import re
import sys


def main():
    page, language, *replacements = sys.argv[1:]
    text = open(page, encoding="utf-8").read()
    code = "\n".join(re.findall(rf"^```{language}\n(.*?)^```$", text, re.M | re.S))
    if not code:
        sys.exit(f"{page} has no block of {language}")
    for old, new in zip(replacements[::2], replacements[1::2]):
        if old not in code:
            sys.exit(f"no block of {page} contains {old}")
        code = code.replace(old, new)
    if language == "cpp":
        includes = re.findall(r"^#include.*$", code, re.M)
        code = re.sub(r"^#include.*\n", "", code, flags=re.M)
        code = "\n".join(includes) + "\n\nint main() {\n" + code + "}"
    print(code)


main()
