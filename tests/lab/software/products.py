"""Reads the table of products, products.toml."""
import os
import re
import tomllib

# The suites of the table, the newest last.
SUITES = ("bookworm", "trixie")
# Suites before them. All others come after them.
OLDER_SUITES = ("buster", "bullseye")
# A suite after them has, in this order, what holds for itself, for this one, and for the newest of them.
NEXT_SUITE = "forky"
_KEYS = {"packages", "bookworm", "trixie", "elsewhere", "signature", "version", "untold", "also", "sample"}


def suites_near(suite):
    """The suites whose lines hold for this one, the nearest first."""
    if suite in SUITES:
        return [suite]
    return [suite, SUITES[0]] if suite in OLDER_SUITES else [suite, NEXT_SUITE, SUITES[-1]]


def of_suite(values, suite):
    return next((values[near] for near in suites_near(suite) if near in values), None)


class TableFault(Exception):
    """The table does not have a product, or names a package that the suite does not have."""


class Product:
    def __init__(self, family, name, row, reasons=None):
        if isinstance(row, str):
            row = {"packages": row}
        unknown = set(row) - _KEYS
        if unknown:
            raise ValueError(f"{name}: unknown key {', '.join(sorted(unknown))}")
        self.family = family
        self.name = name
        self._packages = {suite: row.get(suite, row.get("packages", "")).split() for suite in SUITES}
        # The names in other suites, if they do not follow from those of the table.
        self._elsewhere = row["elsewhere"].split() if "elsewhere" in row else None
        # A signature of the product has one of these guids, or one that continues it after a dot.
        self.guids = row.get("signature", "zav." + name).lower().split()
        self._version = row.get("version")
        untold = row.get("untold", "")
        untold = untold if isinstance(untold, dict) else {suite: untold for suite in SUITES}
        self._untold = {suite: (reasons or {})[reason] if reason.startswith("@") else reason for suite, reason in untold.items()}
        self.also = {guid.lower(): reason for guid, reason in row.get("also", {}).items()}
        self.sample = row.get("sample", False)

    def packages(self, suite):
        """Alternatives, of which the first that the suite has counts: names of packages, and whether their numbers may differ."""
        if suite in SUITES:
            return [(self._packages[suite], False)]
        if self._elsewhere is not None:
            return [(self._elsewhere, False)]
        lists = [self._packages[known] for known in reversed(SUITES) if self._packages[known]]
        return [(names, other_numbers) for other_numbers in (False, True) for names in lists]

    def untold(self, suite):
        """Why the files do not tell the version; empty if they do."""
        return of_suite(self._untold, suite) or ""

    def told_version(self, upstream, suite):
        """The version of upstream as the files tell it."""
        if not self._version:
            return upstream
        rule = self._version
        if not isinstance(rule, list):
            rule = of_suite(rule, suite)
        return re.sub(rule[0], rule[1], upstream) if rule else upstream

    def owns(self, guid):
        return belongs(guid, self.guids)


def belongs(guid, guids):
    return any(guid == one or guid.startswith(one + ".") for one in guids)


class Table:
    def __init__(self, path=None):
        path = path or os.path.join(os.path.dirname(os.path.abspath(__file__)), "products.toml")
        with open(path, "rb") as file:
            document = tomllib.load(file)
        self.cataloguers = [guid.lower() for guid in document.pop("cataloguers", [])]
        reasons = document.pop("reasons", {})
        self.products = [Product(family, name, row, reasons) for family, rows in document.items() for name, row in rows.items()]
        names = [product.name for product in self.products]
        twice = {name for name in names if names.count(name) > 1}
        if twice:
            raise ValueError(f"{path}: listed twice: {', '.join(sorted(twice))}")

    def select(self, names):
        known = {product.name: product for product in self.products}
        unknown = [name for name in names if name not in known]
        if unknown:
            raise TableFault(f"the table has no product {', '.join(unknown)}")
        return [known[name] for name in names] if names else self.products
