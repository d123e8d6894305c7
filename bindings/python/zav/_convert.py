"""The texts of the hardware scanner as values of Python."""

from __future__ import annotations

import re
from datetime import datetime, timedelta, timezone
from typing import Callable, Union

Single = Union[str, int, float, bool, datetime]

_TIME = re.compile(r"(\d{4}-\d\d-\d\d)(?:T(\d\d:\d\d):(\d\d)Z)?", re.ASCII)


def _count(text: str) -> int:
    if not (text.isascii() and text.isdigit()):
        raise ValueError(text)
    return int(text)


def _integer(text: str) -> int:
    return -_count(text[1:]) if text.startswith("-") else _count(text)


def _decimal(text: str) -> float:
    whole, _, fraction = text.partition(".")
    _count(whole)
    _count(fraction)
    return float(text)


def _boolean(text: str) -> bool:
    if text not in ("true", "false"):
        raise ValueError(text)
    return text == "true"


def _time(text: str) -> datetime:
    match = _TIME.fullmatch(text)
    if match is None:
        raise ValueError(text)
    day, minutes, seconds = match.groups()
    # A leap second has the number 60, which datetime does not know.
    return datetime.fromisoformat(f"{day}T{minutes or '00:00'}").replace(tzinfo=timezone.utc) + timedelta(
        seconds=int(seconds or 0)
    )


_CONVERSIONS: dict[str, Callable[[str], Single]] = {
    "text": str,
    "count": _count,
    "integer": _integer,
    "decimal": _decimal,
    "boolean": _boolean,
    "time": _time,
}


def value_of(form: str, text: str) -> Union[Single, list[Single], None]:
    """The value of a text that has this form: "count", "text list". None for an empty text, which means unknown.

    A text that does not have its form raises ValueError.
    """
    if text == "":
        return None
    kind, _, is_list = form.partition(" ")
    convert = _CONVERSIONS[kind]
    return [convert(one) for one in text.split(";")] if is_list else convert(text)
