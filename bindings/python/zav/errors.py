"""The exceptions of the package."""

from __future__ import annotations

from ._catalogue import SENTENCES


class Error(Exception):
    """A call of the library failed.

    code     the return code; `zav.Code` names them.
    text     its sentence.
    reasons  what the library said about it, the causes first.
    """

    def __init__(self, code: int, reasons: tuple[str, ...] = ()) -> None:
        super().__init__(code, reasons)
        self.code = code
        self.text = SENTENCES.get(code, "unknown return code")
        self.reasons = reasons

    def __str__(self) -> str:
        sentence = f"{self.text} ({self.code})"
        return f"{sentence}: {'; '.join(self.reasons)}" if self.reasons else sentence


class ScanTimeout(TimeoutError):
    """A scan took longer than the program allowed and was ended."""
