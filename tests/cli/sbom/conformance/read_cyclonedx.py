"""read_cyclonedx.py DOCUMENT...: reads each document with the library of the CycloneDX project, and compares what it has read with
the document."""
import json
import sys

from cyclonedx.model.bom import Bom


def of_document(components):
    for component in components:
        yield (component["type"], component.get("group"), component["name"], component.get("version"), component.get("cpe"),
               {hash["alg"]: hash["content"] for hash in component.get("hashes", [])},
               sorted((p["name"], p["value"]) for p in component.get("properties", [])))
        yield from of_document(component.get("components", []))


def of_library(components):
    for component in components:
        yield (component.type.value, component.group, component.name, component.version, component.cpe,
               {hash.alg.value: hash.content for hash in component.hashes},
               sorted((p.name, p.value) for p in component.properties))
        yield from of_library(component.components)


# What the library does not know.
def without_unknown(document):
    def strip(component):
        kept = {name: value for name, value in component.items() if name != "evidence"}
        if "components" in kept:
            kept["components"] = [strip(content) for content in kept["components"]]
        return kept

    kept = {name: value for name, value in document.items() if name != "compositions"}
    kept["components"] = [strip(component) for component in document["components"]]
    return kept


def purls(components):
    for component in components:
        if component.purl:
            yield (component.purl.type, component.purl.name, component.purl.version)
        yield from purls(component.components)


def main():
    for path in sys.argv[1:]:
        with open(path) as file:
            document = json.load(file)
        bom = Bom.from_json(without_unknown(document))
        bom.validate()
        expected = sorted(map(repr, of_document(document["components"])))
        read = sorted(map(repr, of_library(bom.components)))
        if expected != read:
            different = next((pair for pair in zip(expected, read) if pair[0] != pair[1]), (len(expected), len(read)))
            sys.exit(f"{path}: read differently: {different}")
        if str(bom.serial_number) != document["serialNumber"].removeprefix("urn:uuid:"):
            sys.exit(f"{path}: the serial number is read as {bom.serial_number}")
        print(f"{path}: read back {len(read)} components, {len(list(purls(bom.components)))} with a package URL")


main()
