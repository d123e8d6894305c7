"""The inventory of this machine, hardware and software.

    import zav

    with zav.Library("my product") as library:
        hardware = library.hardware(["Processor", "Memory"])
        for processor in hardware.groups["Processor"]:
            print(processor["Name"], processor["MaxClockSpeed"])

The package calls the shared library libzav.so.1, which runs the scanners of an inventory toolkit. All results are copies: plain
dictionaries, lists and values that stay valid when the library is closed. Messages go to the loggers "zav.library",
"zav.hardware" and "zav.software".
"""

from __future__ import annotations

import logging

from .codes import Code
from .errors import Error, ScanTimeout
from .inventory import Hardware, Record, Result, Software, Status, Value
from .library import Library

__all__ = [
    "Code",
    "Error",
    "Hardware",
    "Library",
    "Record",
    "Result",
    "ScanTimeout",
    "Software",
    "Status",
    "Value",
]

# Without it, messages of a program that does not configure logging would go to standard error.
logging.getLogger(__name__).addHandler(logging.NullHandler())
