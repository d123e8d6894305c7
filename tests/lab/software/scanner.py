"""Runs quorvis on a tree and reads what it found."""
import os
import re
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree

REPOSITORY = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../.."))
SCAN_LIMIT_S = 300


class ScanFault(Exception):
    """The scanner or its signatures do not work."""


class Result:
    """One match: the guid, the name, the variables of the output, and where it was found."""

    def __init__(self, element):
        self.guid = element.get("guid", "").lower()
        self.name = element.get("name", "")
        self.variables = {variable.get("name"): variable.get("value", "") for variable in element.iterfind("Variable")}
        self.version = self.variables.get("version", "")
        self.evidence = [dict(evidence.attrib) for evidence in element.iterfind("Metadata/Evidence")]

    def where(self):
        for key in ("path", "home"):
            if self.variables.get(key):
                return self.variables[key]
        return next((evidence[key] for evidence in self.evidence for key in ("path", "source") if key in evidence), "")

    def __str__(self):
        return " ".join(part for part in (self.guid, self.version or "(no version)", self.where()) if part)


def default_catalogue():
    for directory in ("share/zav/signatures", "examples/signatures"):
        path = os.path.join(REPOSITORY, directory)
        if os.path.isdir(path) and signature_files(path):
            return path
    raise ScanFault("there are no signatures")


def default_scanner():
    """The one that was built last."""
    built = [os.path.join(REPOSITORY, "build", preset, "bin/quorvis") for preset in ("release", "test", "gcc", "debug")]
    built = [path for path in built if os.path.exists(path)]
    if not built:
        raise ScanFault("quorvis is not built; run 'scripts/build test quorvis', or give --quorvis")
    return max(built, key=os.path.getmtime)


def signature_files(path):
    if not os.path.isdir(path):
        return [path]
    return sorted(os.path.join(directory, name)
                  for directory, _, names in os.walk(path) for name in names if name.endswith(".xml"))


class Scanner:
    def __init__(self, program, signatures, scratch):
        """signatures: files, or directories of files. They become one document, so that a tree is walked once."""
        self.program = program
        self.scratch = scratch
        self.signatures = os.path.join(scratch, "signatures.xml")
        self.configuration = os.path.join(scratch, "configuration.xml")
        # As zav sw does.
        with open(self.configuration, "w", encoding="utf-8") as document:
            document.write('<Configuration><Plugin name="FileSystem">'
                           '<Attribute name="wholeTree" value="true"/>'
                           '<Attribute name="maxDepth" value="64"/>'
                           '<Attribute name="maxMatches" value="200000"/>'
                           '<Attribute name="maxFileSize" value="64M"/></Plugin></Configuration>\n')
        files = [file for path in signatures for file in signature_files(path)]
        for file in files:
            self._refuse_invalid(file)
        with open(self.signatures, "w", encoding="utf-8") as document:
            document.write("<Signatures>\n")
            for file in files:
                with open(file, encoding="utf-8") as source:
                    document.write(re.search(r"<Signatures\b[^>]*>(.*)</Signatures>", source.read(), re.S)[1])
            document.write("</Signatures>\n")

    def _refuse_invalid(self, file):
        """An evaluation of an empty tree names lines of the file, which the document of all files does not keep."""
        with tempfile.TemporaryDirectory(dir=self.scratch) as directory:
            self._run(file, directory, directory)

    def _run(self, signatures, tree, directory):
        output = os.path.join(directory, "output.xml")
        warnings = os.path.join(directory, "warnings.xml")
        run = subprocess.run([self.program, "-c", self.configuration, "-o", output, "-e", warnings, "-i", signatures, "--root", tree],
                             capture_output=True, text=True, timeout=SCAN_LIMIT_S)
        if run.returncode != 0:
            raise ScanFault(f"{self.program} ended with status {run.returncode} for {signatures}:\n{run.stdout}{run.stderr}")
        return output, warnings

    def scan(self, tree):
        """The results and the events that name something unread or undecided."""
        with tempfile.TemporaryDirectory(dir=self.scratch) as directory:
            output, warnings = self._run(self.signatures, tree, directory)
            results = [Result(element) for element in ElementTree.parse(output).getroot().iterfind("MatchedSignature")]
            events = [dict(event.attrib, text=event.text or "") for event in ElementTree.parse(warnings).getroot().iterfind("Event")]
        return results, events

    def signature_elements(self):
        """By guid; the first one where several have the same."""
        elements = {}
        for element in ElementTree.parse(self.signatures).getroot().iter("Signature"):
            elements.setdefault(element.get("guid", "").lower(), element)
        return elements
