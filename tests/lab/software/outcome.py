"""What a scan of a product's tree says, compared with what is in it."""
from products import belongs

RIGHT, WRONG, VERSIONLESS, NOT_FOUND = "right", "wrong", "versionless", "not found"
# Of the products whose files tell their version.
REQUIRED_SHARE = 0.97


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
        # What was not read or not decided: of the scan as a whole and of the product's signatures.
        self.events = [event for event in events if not event.get("guid") or product.owns(event["guid"].lower())]
        self.state = self._state()

    def _state(self):
        if any(result.version not in ("", self.expected) for result in self.own):
            return WRONG
        if any(result.version for result in self.own):
            return RIGHT
        return VERSIONLESS if self.own else NOT_FOUND

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
                "foreign": told(self.foreign), "events": self.events}


class Totals:
    def __init__(self, outcomes):
        self.told = [outcome for outcome in outcomes if not outcome.untold]
        self.right = sum(outcome.state == RIGHT for outcome in self.told)
        self.states = {state: sum(outcome.state == state for outcome in outcomes)
                       for state in (RIGHT, WRONG, VERSIONLESS, NOT_FOUND)}
        self.untold = len(outcomes) - len(self.told)
        self.untold_met = sum(outcome.is_met() for outcome in outcomes if outcome.untold)
        self.foreign = sum(len(outcome.foreign) for outcome in outcomes)
        self.products = len(outcomes)

    def share(self):
        return self.right / len(self.told) if self.told else 1.0

    def are_met(self):
        return self.share() >= REQUIRED_SHARE and self.states[WRONG] == 0 and self.foreign == 0 and self.untold_met == self.untold

    def as_json(self):
        return {"products": self.products, "told": len(self.told), "right": self.right, "share": round(self.share(), 4),
                "states": {state.replace(" f", "F"): count for state, count in self.states.items()},
                "untold": self.untold, "untoldMet": self.untold_met, "foreign": self.foreign, "met": self.are_met()}

    def __str__(self):
        return (f"{self.right} of {len(self.told)} right ({100 * self.share():.1f} %, required {100 * REQUIRED_SHARE:.0f} %), "
                f"{self.states[WRONG]} wrong, {self.states[NOT_FOUND]} not found, {self.states[VERSIONLESS]} versionless; "
                f"{self.untold_met} of {self.untold} whose files tell no version; {self.foreign} results of other products")
