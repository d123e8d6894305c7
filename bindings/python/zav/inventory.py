"""What scans and evaluations return: copies that do not depend on the library."""

from __future__ import annotations

import logging
from dataclasses import dataclass
from datetime import datetime
from typing import Union, cast

from ._catalogue import FORMS
from ._convert import value_of
from .records import Groups

Value = Union[str, int, float, bool, datetime, list[str], list[int], list[float], list[bool], list[datetime], None]
Record = dict[str, Value]

_LISTS = (
    ("GroupsUnread", "unread"),
    ("GroupsPartial", "partial"),
    ("GroupsUnsupported", "unsupported"),
    ("GroupsNotApplicable", "not-applicable"),
    ("GroupsComplete", "complete"),
)


@dataclass(frozen=True)
class Status:
    """How completely a group was read.

    state   "complete", "partial", "unread", "not-applicable", "unsupported", or "unknown" if the scanner does not tell.
    reason  why it is not complete: "permission", for example; otherwise empty.
    """

    state: str
    reason: str = ""


class Hardware:
    """The hardware that a scan found."""

    def __init__(self, texts: dict[str, list[dict[str, str]]], scan_info: dict[str, str]) -> None:
        self._texts = texts
        self._groups = {group: [_record(group, instance) for instance in instances] for group, instances in texts.items()}
        #: How completely each group was read.
        self.status = {group: _status(group, scan_info) for group in texts}

    @property
    def groups(self) -> Groups:
        """The instances of each scanned group: `hardware.groups["Processor"][0]["Name"]`.

        An instance is a dictionary of the fields that `zav.records` describes. An unknown value is None.
        """
        return cast(Groups, self._groups)

    def instances(self, group: str) -> list[Record]:
        """The instances of a group whose name is not known before the program runs."""
        return self._groups[group]

    def texts(self, group: str) -> list[dict[str, str]]:
        """The instances of a group with the values as the scanner wrote them."""
        return self._texts[group]

    @property
    def complete(self) -> bool:
        """Whether every group that this machine can have was read completely."""
        return all(status.state in ("complete", "not-applicable") for status in self.status.values())

    def __repr__(self) -> str:
        return f"<zav.Hardware: {', '.join(f'{len(found)} {group}' for group, found in self._groups.items())}>"


@dataclass(frozen=True)
class Result:
    """A signature that matched.

    guid       its identifier.
    variables  what it reports.
    metadata   XML text; empty if it has none.
    """

    guid: str
    variables: dict[str, str]
    metadata: str


@dataclass(frozen=True)
class Software:
    """The signatures that matched in an evaluation.

    results   in the scanner's order.
    warnings  what the scanner could not examine, each an XML text of one line.
    """

    results: list[Result]
    warnings: list[str]

    def find(self, guid: str) -> list[Result]:
        """The results with this identifier."""
        return [result for result in self.results if result.guid == guid]

    def rows(self) -> list[dict[str, str]]:
        """One dictionary for each result: its guid and its variables."""
        return [{"guid": result.guid, **result.variables} for result in self.results]


def _record(group: str, texts: dict[str, str]) -> Record:
    forms = FORMS.get(group, {})
    record: Record = dict.fromkeys(forms)
    for field, text in texts.items():
        try:
            record[field] = cast(Value, value_of(forms.get(field, "text"), text))
        except ValueError:
            record[field] = None
            logging.getLogger("zav.hardware").warning(
                "%s.%s is %r, which is not of the type %s; texts() has it", group, field, text, forms[field]
            )
    return record


def _status(group: str, scan_info: dict[str, str]) -> Status:
    # A group that is in several lists has the state of the first one.
    for field, state in _LISTS:
        for entry in scan_info.get(field, "").split(";"):
            name, _, reason = entry.partition("=")
            if name == group:
                return Status("unsupported") if (state, reason) == ("partial", "unsupported") else Status(state, reason)
    return Status("unknown")
