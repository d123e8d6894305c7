"""What mypy --strict accepts: the records have the types of the catalogue."""

import datetime
from typing import Optional

import zav
from zav import records


def inventory(library: zav.Library) -> None:
    hardware: zav.Hardware = library.hardware(["Processor", 25], timeout=5)
    processor: records.Processor = hardware.groups["Processor"][0]
    speed: Optional[int] = processor["CurrentClockSpeed"]
    flags: Optional[list[str]] = processor["Flags"]
    installed: Optional[datetime.datetime] = hardware.groups["SoftwarePackages"][0]["InstallDate"]
    state: str = hardware.status["Processor"].state
    software: zav.Software = library.software(["<Signature/>"], settings=[("Secrets", "allow", "/root")])
    versions: list[str] = [result.variables["version"] for result in software.results]
    print(speed, flags, installed, state, versions)
