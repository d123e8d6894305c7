"""What a scan of a product's tree says, compared with what is in it."""
import os

from products import SUITES, belongs
from versions import spelled_alike

RIGHT, WRONG, VERSIONLESS, NOT_FOUND = "right", "wrong", "versionless", "not found"
# Of the products whose files tell their version.
REQUIRED_SHARE = 0.97
# The usual parts of an installation.
_PARTS = ("bin", "sbin", "lib", "lib32", "lib64", "libx32", "libexec", "share", "include")


def installation(path):
    """The directory below which the product of this file is installed: /opt/tool of /opt/tool/lib/x.so."""
    directory = os.path.dirname(path)
    names = directory.split("/")
    last = max((index for index, name in enumerate(names) if name in _PARTS), default=len(names))
    return "/".join(names[:last]).removesuffix("/usr") or "/"


def repeated(results):
    """The results that add nothing: another one of the same signature and name has the same version in the same installation,
    or any version if this one has none."""
    kept, twice = [], []
    for result in sorted(results, key=lambda result: not result.version):
        alike = [other for other in kept if (other.guid, other.name) == (result.guid, result.name)
                 and installation(other.where()) == installation(result.where()) and result.version in ("", other.version)]
        (twice if alike else kept).append(result)
    return twice


class Outcome:
    def __init__(self, subject, results, events, cataloguers):
        product = self.product = subject.product
        suite = self.suite = subject.suite
        self.expected = subject.expected()
        self.package = subject.packages[0]
        self.untold = product.untold(suite)
        self.own = [result for result in results if product.owns(result.guid)]
        rest = [result for result in results if not product.owns(result.guid)]
        self.catalogued = [result for result in rest if belongs(result.guid, cataloguers)]
        rest = [result for result in rest if not belongs(result.guid, cataloguers)]
        self.allowed = [result for result in rest if belongs(result.guid, product.also)]
        self.foreign = [result for result in rest if not belongs(result.guid, product.also)]
        self.repeated = repeated(self.own + self.foreign + self.allowed)
        # What was not read or not decided: of the scan as a whole and of the product's signatures.
        self.events = [event for event in events if not event.get("guid") or product.owns(event["guid"].lower())]
        self.state = self._state()

    def _state(self):
        if any(result.version and not self._is_expected(result.version) for result in self.own):
            return WRONG
        if any(result.version for result in self.own):
            return RIGHT
        return VERSIONLESS if self.own else NOT_FOUND

    def _is_expected(self, version):
        return version == self.expected or (self.suite not in SUITES and spelled_alike(version, self.expected))

    def is_met(self):
        """Right, or reported without a version where the files do not tell one."""
        return self.state == RIGHT or (self.state == VERSIONLESS and bool(self.untold))

    def as_json(self):
        def told(results):
            return [{"guid": result.guid, "name": result.name, "version": result.version, "path": result.where()}
                    for result in results]
        return {"product": self.product.name, "suite": self.suite, "package": self.package.name,
                "packageVersion": self.package.version, "expected": self.expected, "state": self.state, "untold": self.untold,
                "found": told(self.own), "allowed": told(self.allowed), "catalogued": told(self.catalogued),
                "foreign": told(self.foreign), "repeated": told(self.repeated), "events": self.events}


class Totals:
    def __init__(self, outcomes):
        self.told = [outcome for outcome in outcomes if not outcome.untold]
        self.right = sum(outcome.state == RIGHT for outcome in self.told)
        self.states = {state: sum(outcome.state == state for outcome in outcomes)
                       for state in (RIGHT, WRONG, VERSIONLESS, NOT_FOUND)}
        self.untold = len(outcomes) - len(self.told)
        self.untold_met = sum(outcome.is_met() for outcome in outcomes if outcome.untold)
        self.foreign = sum(len(outcome.foreign) for outcome in outcomes)
        self.repeated = sum(len(outcome.repeated) for outcome in outcomes)
        self.products = len(outcomes)

    def share(self):
        return self.right / len(self.told) if self.told else 1.0

    def are_met(self):
        return (self.share() >= REQUIRED_SHARE and self.states[WRONG] == 0 and self.foreign == 0 and self.repeated == 0
                and self.untold_met == self.untold)

    def as_json(self):
        return {"products": self.products, "told": len(self.told), "right": self.right, "share": round(self.share(), 4),
                "states": {state.replace(" f", "F"): count for state, count in self.states.items()},
                "untold": self.untold, "untoldMet": self.untold_met, "foreign": self.foreign, "repeated": self.repeated, "met": self.are_met()}

    def __str__(self):
        return (f"{self.right} of {len(self.told)} right ({100 * self.share():.1f} %, required {100 * REQUIRED_SHARE:.0f} %), "
                f"{self.states[WRONG]} wrong, {self.states[NOT_FOUND]} not found, {self.states[VERSIONLESS]} versionless; "
                f"{self.untold_met} of {self.untold} whose files tell no version; {self.foreign} results of other products, "
                f"{self.repeated} repeated")
