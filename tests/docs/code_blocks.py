#!/usr/bin/env python3
"""code_blocks.py BUILD WORK: fails if a code block of README.md, CONTRIBUTING.md or docs/ does not do what it shows.

Every block names its language. Blocks of sh and console are run, with the installed programs of BUILD, in a directory that has the files
which the pages name; scans that name no directory look at a small tree. A block that cannot be run says so in its first line:
"# Not run by the tests: REASON". Signatures and configurations are given to quorvis, JSON and INI files are parsed. PROGRAMS tells
which test runs the blocks of a programming language.
"""
import configparser
import json
import os
import re
import shutil
import stat
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
NOT_RUN = "# Not run by the tests: "

# What runs the programs of a page.
PROGRAMS = {
    ("README.md", "c"): "Install.cmake",
    ("README.md", "cmake"): "Install.cmake",
    ("docs/embedding.md", "c"): "EmbeddingPage",
    ("docs/cpp.md", "cpp"): "CppPage",
    ("docs/cpp.md", "cmake"): "CppPage",
    ("docs/python.md", "python"): "PythonPage",
    ("docs/node.md", "js"): "node",
    ("docs/architecture.md", "includes"): "scripts/check-includes",
}
LABORATORY = "docs/fleet.md"  # tests/lab/fleet/run runs this page
COMMANDS = re.compile(r"(?:[$#] )?(?:sudo )?(?:\./run|\./test|zav|quorvah|quorvis|cmake|ctest|scripts/\w+|tests/lab/\S+)(?: (?!.*[\[A-Z]{3,}).*)?$")

SIGNATURE = """<Signatures><Signature guid="my.guid" name="GNU Bash">
<Match><Package id="p" name="bash"/></Match></Signature></Signatures>
"""
STATUS = """Package: bash
Status: install ok installed
Architecture: amd64
Version: 5.2.15-2+b8
Maintainer: Somebody <nobody@example.org>
Description: a shell

"""

problems = []
counts = {"run": 0, "not run": 0, "checked": 0}


def write(path, text, mode=0o644):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    os.chmod(path, mode)


class Place:
    """Where the blocks are run."""

    def __init__(self, build, work):
        shutil.rmtree(work, ignore_errors=True)
        os.makedirs(work)
        self.work = work
        self.prefix = f"{work}/prefix"
        subprocess.run(["cmake", "--install", build, "--prefix", self.prefix], check=True, stdout=subprocess.DEVNULL)
        self.tree = f"{work}/tree"
        write(f"{self.tree}/etc/os-release", 'ID=debian\nPRETTY_NAME="Debian GNU/Linux 12 (bookworm)"\n')
        write(f"{self.tree}/etc/hostname", "web1\n")
        write(f"{self.tree}/var/lib/dpkg/status", STATUS)
        for program in ("usr/bin/curl", "opt/tool-2.1/tool"):
            os.makedirs(os.path.dirname(f"{self.tree}/{program}"), exist_ok=True)
            shutil.copy("/bin/ls", f"{self.tree}/{program}")
        # A command without --root looks at the tree: the machine of the test may be large.
        self.zav = self.find("zav")
        wrapper = ('#!/bin/sh\nnames=" $* "\ncase "$1" in hw|sw|sbom|facts|capture|export|report)\n'
                   '  case "$names" in *" --root "*|*" --from "*|*" --list "*|*" --check "*|*" --help "*) ;; *) set -- "$@" --root "$TREE" ;; esac ;;\nesac\n'
                   f'exec "{self.zav}" "$@"\n')
        write(f"{work}/bin/zav", wrapper, 0o755)
        self.environment = dict(os.environ, TREE=self.tree, LC_ALL="C.UTF-8", PKG_CONFIG_PATH=self.pkg_config(),
                                PATH=f"{work}/bin:{os.path.dirname(self.find('quorvah'))}:{os.environ['PATH']}")

    def find(self, name):
        for directory, _, names in os.walk(self.prefix):
            path = f"{directory}/{name}"
            if name in names and os.stat(path).st_mode & stat.S_IXUSR:
                return path
        raise SystemExit(f"{name} is not installed")

    def pkg_config(self):
        return next(directory for directory, _, names in os.walk(self.prefix) if "zav.pc" in names)

    def directory(self, page):
        """The directory of a page, whose blocks can use the files of earlier ones."""
        path = f"{self.work}/{page.replace('/', '-')}"
        if not os.path.isdir(path):
            os.makedirs(path)
            write(f"{path}/mine.xml", SIGNATURE)
            write(f"{path}/config.xml", "<Scan/>\n")
            write(f"{path}/run", f'#!/bin/sh\n[ $# -gt 0 ] || set -- hw\nexec "{self.work}/bin/zav" "$@"\n', 0o755)
            for name in ("monday", "tuesday"):
                inventory = self.run(path, "zav hw --format json").stdout
                write(f"{path}/{name}.json", inventory)
            for example in ("processors.c", "shell.c"):
                shutil.copy(f"{SOURCE}/examples/{example}", path)
        return path

    def run(self, directory, script):
        return subprocess.run(["bash", "-e", "-o", "pipefail", "-c", script], cwd=directory, env=self.environment,
                              capture_output=True, text=True, timeout=120, check=False)


def prepared(place, page, text, blocks):
    """The script with the directories of the tree; files that other blocks of the page show are written."""
    directory = place.directory(page)
    if page == "docs/embedding.md":
        write(f"{directory}/inventory.c", "\n".join(code for language, _, code, _ in blocks if language == "c"))
    if page == "docs/signature-language.md":
        write(f"{directory}/bash.xml", next(code for language, _, code, _ in blocks if language == "xml"))
    text = re.sub(r"/mnt/(?:disk|image)\b|\bTREE\b", place.tree, text)
    return directory, re.sub(r"(?<![\w/])/(usr/bin/curl|opt/tool-2\.1)", place.tree + r"/\1" if "--root" not in text else r"/\1", text)


def check_shell(place, page, where, text, blocks):
    if text.startswith(NOT_RUN):
        counts["not run"] += 1
        if len(text.split("\n")[0]) < len(NOT_RUN) + 10:
            problems.append(f"{where}: the reason is missing")
        return
    directory, script = prepared(place, page, text, blocks)
    run = place.run(directory, script)
    counts["run"] += 1
    if run.returncode != 0:
        problems.append(f"{where}: status {run.returncode} of\n{script}{run.stdout[-500:]}{run.stderr[-1500:]}")


def check_console(place, page, where, text):
    for prompt, command in re.findall(r"^([$#]) (.*)$", text, re.M):
        run = place.run(place.directory(page), command)
        counts["run"] += 1
        if run.returncode not in (0, 3):
            problems.append(f"{where}: status {run.returncode} of {prompt} {command}\n{run.stderr}")


def check_xml(place, page, where, text):
    directory = place.directory(page)
    try:
        ElementTree.fromstring(text if text.startswith("<?xml") else f"<page>{text}</page>")
    except ElementTree.ParseError as error:
        problems.append(f"{where}: {error}")
        return
    counts["checked"] += 1
    if text.startswith("<Signature"):
        signatures = text if text.startswith("<Signatures>") else f"<Signatures>{text}</Signatures>"
        write(f"{directory}/block.xml", signatures)
        run = place.run(directory, "quorvis --check -i block.xml")
    elif text.startswith("<Plugin"):
        write(f"{directory}/block.xml", f"<Scan>{text}</Scan>")
        run = place.run(directory, 'quorvis -c block.xml -o o.xml -e e.xml -i mine.xml --root "$TREE"')
    else:
        return
    if run.returncode != 0:
        problems.append(f"{where}: status {run.returncode}\n{run.stdout}{run.stderr}")


def check_block(place, page, block, blocks):
    language, words, text, line = block
    where = f"{page}:{line}"
    try:
        if not language:
            problems.append(f"{where}: the block names no language; output and grammars are \"text\"")
        elif page == LABORATORY or (page, language) in PROGRAMS:
            return
        elif language == "sh":
            check_shell(place, page, where, text, blocks)
        elif language == "console":
            check_console(place, page, where, text)
        elif language == "xml":
            check_xml(place, page, where, text)
        elif language == "json":
            json.loads(text)
            counts["checked"] += 1
        elif language == "ini":
            configparser.ConfigParser(interpolation=None).read_string(text if text.startswith("[") else "[file]\n" + text)
            counts["checked"] += 1
        elif language == "text":
            for command in filter(COMMANDS.match, text.split("\n")):
                problems.append(f"{where}: \"{command}\" is a command; the block is \"sh\" or \"console\"")
        else:
            problems.append(f"{where}: nothing runs or checks blocks of {language}")
    except (ValueError, configparser.Error) as error:
        problems.append(f"{where}: {error}")


def read_blocks(path):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    pattern = re.compile(r"^```(\S*) ?(.*)\n((?s:.*?))^```$", re.M)
    return [(*match.groups(), text[:match.start()].count("\n") + 1) for match in pattern.finditer(text)]


def main():
    build, work = sys.argv[1:]
    place = Place(os.path.abspath(build), os.path.abspath(work))
    os.chdir(SOURCE)
    pages = ["README.md", "CONTRIBUTING.md"] + sorted(f"docs/{name}" for name in os.listdir("docs") if name.endswith(".md"))
    for page in pages:
        blocks = read_blocks(page)
        for block in blocks:
            check_block(place, page, block, blocks)
    if counts["run"] < 5 or counts["checked"] < 10:
        problems.append(f"too few blocks: {counts}")
    print("\n".join(problems), file=sys.stderr)
    print(", ".join(f"{count} {name}" for name, count in counts.items()) + f", {len(problems)} problems")
    sys.exit(1 if problems else 0)


main()
