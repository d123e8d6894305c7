"""Writes docs/software-catalogue.md: what the catalogue knows, and the versions on which the laboratory proved it."""
import os
import re

from outcome import NOT_FOUND, RIGHT, VERSIONLESS

_KINDS = {"elf": "text in {}", "content": "text in {}", "property": "setting in {}", "xml": "element in {}",
          "fileVersion": "product information of {}", "glob": "{}", "file": "{}", "package": "package {}"}
_HEAD = """# The software catalogue

`zav sw` recognises the products of this page by their package and by their own files. The versions are those of Debian packages
that were unpacked without the package database. The files of each were scanned with the signatures of the catalogue, and nothing
but this version was reported for the product. `tests/lab/software/run --write-page` writes this page.
[CONTRIBUTING](../CONTRIBUTING.md#the-software-laboratory) tells how to run the laboratory.

| suite | products | right version | wrong version | found, files tell no version | not found | results of other products |
|---|---|---|---|---|---|---|
"""


def write(path, outcomes, totals, signatures):
    """outcomes, totals: by suite. signatures: the elements by guid."""
    with open(path, "w", encoding="utf-8") as page:
        page.write(_HEAD)
        for suite, total in totals.items():
            page.write(f"| {suite} | {total.products} | {total.right} | {total.states['wrong']} | {total.untold_met} | "
                       f"{total.states[NOT_FOUND]} | {total.foreign} |\n")
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
        _write_untested(page, signatures, covered)


def _list(texts, form="{}"):
    return ", ".join(form.format(text) for text in texts)


def _title(product, guids, signatures):
    for guid in sorted(guids):
        home = signatures[guid].findtext("Metadata/Home") or signatures[guid].findtext("Metadata/Homepage")
        name = signatures[guid].findtext("Metadata/Name") or signatures[guid].get("name")
        return f"[{name}]({home})" if home else name
    return product.name


def _versions(outcomes):
    told = list(dict.fromkeys(outcome.expected for outcome in outcomes if outcome.state == RIGHT))
    notes = []
    for outcome in outcomes:
        if outcome.state == VERSIONLESS:
            reason = outcome.untold or "the signature does not find it"
            notes.append(f"without a version in {outcome.expected}: {reason}")
        elif outcome.state != RIGHT:
            notes.append(f"{outcome.state} in {outcome.expected}")
    return "; ".join([_list(told)] * bool(told) + list(dict.fromkeys(notes)))


def _evidence(outcomes):
    """Of the newest version that was found: the items that have it, or all if none has."""
    for outcome in reversed(outcomes):
        for result in outcome.own:
            told = [item for item in result.evidence if item.get("version")] or result.evidence
            return _list(dict.fromkeys(
                _KINDS.get(item.get("kind"), "{}").format(f"`{os.path.normpath(item.get('source', ''))}`") for item in told))
    return ""


def _write_untested(page, signatures, covered):
    rest = {guid: signature for guid, signature in signatures.items() if guid not in covered}
    if rest:
        page.write("\n## Tested with files made by hand\n\nThese are not in the suites, or only in larger packages than the laboratory "
                   "fetches.\n\n| product | signature |\n|---|---|\n")
        for guid in sorted(rest):
            name = re.sub(r"\$\{[^}]*\}", "...", rest[guid].get("name", ""))
            page.write(f"| {name} | `{guid}` |\n")
