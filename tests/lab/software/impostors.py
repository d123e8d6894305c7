"""Files that have the names of products and are something else: nothing may be reported for them.

For each pattern of the catalogue there is a script, a text with the banners of well-known products, and a program of another product.
"""
import os
import re
import shutil

# A program that every machine has, and what it really is.
PROGRAM = "/bin/true"
PROGRAM_GUIDS = ("zav.coreutils", "zav.busybox")
_BANNERS = ("nginx/1.22.1", "OpenSSL 3.0.1 14 Dec 2021", "OpenSSH_9.2p1 Debian-2", "curl 8.0.1 (x86_64-pc-linux-gnu)", "Apache/2.4.57 (Unix)",
            "PHP 8.1.2 (cli)", "Redis server v=7.0.1 sha=00000000:0", "mysqld  Ver 8.0.34", "git version 2.43.0", "Python 3.11.4",
            "GNU bash, version 5.2.15(1)-release", "HAProxy version 2.8.1", "Zabbix 6.0.1", "ClickHouse 23.8.1", "Deno/1.40.0")
MAX_NAMES_PER_PATTERN = 40


def names(signatures):
    """A path for each alternative of each pattern of the signatures."""
    patterns = {glob.get("pattern") for signature in signatures for glob in signature.iter("Glob")}
    return sorted({_literal(name) for pattern in patterns if "${" not in pattern
                   for name in _alternatives(pattern)[:MAX_NAMES_PER_PATTERN]})


def _alternatives(pattern):
    braces = re.search(r"\{([^{}]*)\}", pattern)
    if not braces:
        return [pattern]
    return [name for part in braces[1].split(",") for name in _alternatives(pattern[:braces.start()] + part + pattern[braces.end():])]


def _literal(pattern):
    name = pattern.replace("**", "place").replace("[0-9]*", "1.2.3")
    return re.sub(r"\[!?(.)[^]]*\]", r"\1", name).replace("*", "1.2.3").replace("?", "1")


def make(tree, paths, kind):
    """kind: script, text or program."""
    for path in paths:
        place = tree + path
        try:
            os.makedirs(os.path.dirname(place), exist_ok=True)
            if kind == "program":
                shutil.copyfile(PROGRAM, place)
            else:
                with open(place, "w", encoding="utf-8") as file:
                    file.write(_text(os.path.basename(path), kind))
        except (NotADirectoryError, IsADirectoryError, FileExistsError):
            # Another pattern has a file where this one has a directory.
            continue
        os.chmod(place, 0o755)


def _text(name, kind):
    if kind == "script":
        return f'#!/bin/sh\n# {name} 1.2.3\nexec /opt/real/{name} "$@"\n'
    return "\n".join((f"{name} 1.2.3", f"{name} version 1.2.3", f"Version: 1.2.3", *_BANNERS)) + "\n"


def is_wrong(result, kind, is_catalogued):
    if kind == "program" and result.guid.startswith(PROGRAM_GUIDS):
        return False
    return not is_catalogued(result.guid)
