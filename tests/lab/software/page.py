"""Writes docs/software-catalogue.md: what the catalogue knows, and the versions on which the laboratory proved it."""
import os
import re

from outcome import NOT_FOUND, RIGHT, VERSIONLESS
from products import belongs

_KINDS = {"elf": "text in {}", "content": "text in {}", "property": "setting in {}", "xml": "element in {}",
          "fileVersion": "product information of {}", "glob": "{}", "file": "{}", "package": "package {}"}
_HEAD = """# The software catalogue

`zav sw` recognises the products of this page by their package and by their own files. The versions are those of Debian packages
that were unpacked without the package database. The files of each were scanned with the signatures of the catalogue. `tests/lab/software/run --write-page` writes this page.
[CONTRIBUTING](../CONTRIBUTING.md#the-software-laboratory) tells how to run the laboratory.

| suite | products | right version | wrong version | found, files tell no version | not found | results of other products |
|---|---|---|---|---|---|---|
"""
# Figures of runs for other suites, which writing the page does not repeat.
_OTHER_BUILDS = """
Builds for which no signature was written, as `tests/lab/software/run --suite` and `--architecture` find them:

| suite | right version | wrong version | found, files tell no version | not found | results of other products |
|---|---|---|---|---|---|
| sid | 284 | 0 | 26 | 0 | 0 |
| forky | 274 | 0 | 26 | 0 | 0 |
| bullseye | 250 | 0 | 25 | 0 | 0 |
| trixie for armhf, i386 and riscv64, the sample | 25 each | 0 | 0 | 0 | 0 |
"""


def write(path, outcomes, totals, signatures, cataloguers):
    """outcomes, totals: by suite. signatures: the elements by guid. cataloguers: the guids of signatures of language packages."""
    with open(path, "w", encoding="utf-8") as page:
        page.write(_HEAD)
        for suite, total in totals.items():
            page.write(f"| {suite} | {total.products} | {total.right} | {total.states['wrong']} | {total.untold_met} | "
                       f"{total.states[NOT_FOUND]} | {total.foreign} |\n")
        page.write(_OTHER_BUILDS)
        products = {}
        for suite in outcomes:
            for outcome in outcomes[suite]:
                products.setdefault(outcome.product, []).append(outcome)
        covered = set()
        for family in dict.fromkeys(product.family for product in products):
            page.write(f"\n## {family.replace('-', ' ').capitalize()}\n\n"
                       "| product | signature | versions | the version is in |\n|---|---|---|---|\n")
            for product, those in products.items():
                if product.family == family:
                    guids = {result.guid for outcome in those for result in outcome.own}
                    covered |= guids
                    page.write(f"| {_title(product, guids, signatures)} | {_list(sorted(guids), '`{}`')} | {_versions(those)} "
                               f"| {_evidence(those)} |\n")
        catalogued = sorted(guid for guid in signatures if belongs(guid, cataloguers))
        page.write("\n## Packages of languages\n\nThese signatures report every package that they find, with the version of its "
                   f"own metadata:\n{_list(catalogued, '`{}`')}.\n")
        _write_others(page, {guid: signature for guid, signature in signatures.items() if guid not in covered.union(catalogued)})


def _list(texts, form="{}"):
    return ", ".join(form.format(text) for text in texts)


def _title(product, guids, signatures):
    for guid in sorted(guids):
        home = signatures[guid].findtext("Metadata/Home") or signatures[guid].findtext("Metadata/Homepage")
        name = signatures[guid].findtext("Metadata/Name") or signatures[guid].get("name")
        name = re.sub(r"\$\{[^}]*\}", "...", name)
        return f"[{name}]({home})" if home else name
    return product.name


def _versions(outcomes):
    told = list(dict.fromkeys(outcome.expected for outcome in outcomes if outcome.state == RIGHT))
    notes = {}
    for outcome in outcomes:
        if outcome.state == VERSIONLESS:
            reason = outcome.untold or "the signature does not see it"
            notes.setdefault(f"found without a version in {{}}: {reason}", []).append(outcome.expected)
        elif outcome.state != RIGHT:
            notes.setdefault(f"{outcome.state} in {{}}", []).append(outcome.expected)
    told = [_list(told)] if told else []
    return "; ".join(told + [note.format(_list(dict.fromkeys(versions))) for note, versions in notes.items()])


def _evidence(outcomes):
    """Of the newest version that was found: the items that have it, or all if none has."""
    for outcome in reversed(outcomes):
        for result in outcome.own:
            told = [item for item in result.evidence if item.get("version")] or result.evidence
            return _list(dict.fromkeys(
                _KINDS.get(item.get("kind"), "{}").format(f"`{os.path.normpath(item.get('source', ''))}`") for item in told))
    return ""


def _write_others(page, signatures):
    if signatures:
        page.write("\n## Not in the laboratory\n\nThese products are not in the suites, or only in larger packages than the "
                   "laboratory fetches.\n\n| product | signature |\n|---|---|\n")
        for guid in sorted(signatures):
            page.write(f"| {_title(None, [guid], signatures)} | `{guid}` |\n")
