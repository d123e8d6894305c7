"""What the laboratory examines: products with the packages of a suite, and their unpacked files."""
import os
import sys

import mirror as mirrors
import trees
from products import SUITES, TableFault
from versions import upstream

MAX_ARCHIVE_BYTES = 60_000_000


class Subject:
    def __init__(self, product, packages, suite, place):
        self.product = product
        self.packages = packages
        self.suite = suite
        # Where the files are moved below the root, or None.
        self.place = place

    def expected(self):
        """The version that is to be reported."""
        return self.product.told_version(upstream(self.packages[0].version), self.suite)


def say(text):
    print(text, file=sys.stderr)


class Storeroom:
    """The packages and trees of a suite in the cache."""

    def __init__(self, cache, suite, sources=None, architecture=""):
        """sources: lines of sources.list; by default, those of the machine. architecture: by default, the machine's own one."""
        self.suite = suite
        self.architecture = architecture
        self.directory = os.path.join(cache, f"{suite}-{architecture}" if architecture else suite)
        self.sources = sources
        self.mirror = None

    def subjects(self, products, moved):
        """Those of the products that the suite has. Their packages are fetched."""
        with trees.locked(self.directory):
            self.mirror = mirrors.Mirror(self.suite, self.directory, self.sources, self.architecture)
            if self.mirror.index_note:
                say(f"{self.suite}: {self.mirror.index_note}")
            return self._fetched(self._resolved(products, moved))

    def _resolved(self, products, moved):
        alternatives = {product: [[mirrors.with_other_numbers(name) if other_numbers else name for name in names]
                                  for names, other_numbers in product.packages(self.suite) if names] for product in products}
        found = self.mirror.resolve({name for those in alternatives.values() for names in those for name in names})
        if self.suite in SUITES:
            missing = sorted(name for those in alternatives.values() for names in those for name in names if name not in found)
            # An architecture may lack packages that the others have.
            if missing and not self.architecture:
                raise TableFault(f"{self.suite} has no package {', '.join(missing)}")
        subjects = []
        for product in products:
            # Of several alternatives, the first one with the most packages.
            those = [names for names in alternatives[product] if names[0] in found]
            names = max(those, key=lambda names: len(_of_one_build(names, found)), default=[])
            packages = _of_one_build(names, found) if self.suite not in SUITES else [found[name] for name in names if name in found]
            if any(package.size > MAX_ARCHIVE_BYTES for package in packages):
                say(f"{self.suite}: {product.name}: larger than {MAX_ARCHIVE_BYTES // 1_000_000} MB")
            elif packages:
                place = trees.new_place(product.name, upstream(packages[0].version)) if moved else None
                if place or not moved:
                    subjects.append(Subject(product, packages, self.suite, place))
        return subjects

    def _fetched(self, subjects):
        wanted = {package.name: package for subject in subjects for package in subject.packages}
        absent = {package.name for package in self.mirror.fetch(wanted.values())}
        if absent and self.suite in SUITES:
            self.mirror.forget_index()
            raise mirrors.MirrorFault(f"the mirror has changed, run again; it does not have: {', '.join(sorted(absent))}")
        for name in sorted(absent):
            say(f"{self.suite}: the mirror lists {name} {wanted[name].version} and does not have it")
        return [subject for subject in subjects if not absent & {package.name for package in subject.packages}]

    def tree(self, subject):
        """The directory with the files of a subject."""
        directory = os.path.join(self.directory, "moved" if subject.place else "trees", subject.product.name)
        tree = os.path.join(directory, "root")
        label = "\n".join([subject.place or ""] + [package.archive_name() for package in subject.packages])
        written = os.path.join(directory, "contents")
        with trees.locked(directory):
            if not (_text(written) == label and os.path.isdir(tree)):
                if os.path.exists(written):
                    os.unlink(written)
                trees.unpack([self.mirror.archive(package) for package in subject.packages], tree, subject.place)
                with open(written, "w") as file:
                    file.write(label)
        return tree


def _of_one_build(names, found):
    """The packages of these names, without those that an earlier version of the first one's source left in the suite."""
    if not names:
        return []
    first = found[names[0]]
    packages = [found[name] for name in names if name in found]
    return [package for package in packages
            if package.source != first.source or upstream(package.version) == upstream(first.version)]


def _text(path):
    if not os.path.exists(path):
        return ""
    with open(path) as file:
        return file.read()
