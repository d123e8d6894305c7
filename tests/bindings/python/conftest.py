"""Toolkits for the tests: that of the build, and such whose scanners are scripts."""

import os
import pathlib

import pytest

import zav


class Toolkit:
    """A toolkit with scanners that the test writes, and a directory for the library's temporary files."""

    def __init__(self, directory: pathlib.Path) -> None:
        self.path = directory / "toolkit"
        self.temp = directory / "temp é"
        self.path.mkdir()
        self.temp.mkdir()

    def script(self, scanner: str, text: str) -> None:
        file = self.path / scanner
        file.write_text(f"#!/bin/sh\n{text}\n")
        file.chmod(0o755)

    def hardware_is(self, xml: str) -> None:
        """The hardware scanner writes these instances. Its arguments are -c CONFIG -o OUTPUT."""
        (self.path / "hardware.xml").write_text(f"<Hardware>{xml}</Hardware>", encoding="utf-8")
        self.script("quorvah", f'cat "{self.path}/hardware.xml" >"$4"')

    def software_is(self, xml: str, warnings: str = "") -> None:
        """The signature scanner writes these matches. Its arguments are -c CONFIG -o OUTPUT -e WARNINGS -i SIGNATURES."""
        (self.path / "software.xml").write_text(f"<Software>{xml}</Software>", encoding="utf-8")
        (self.path / "warnings.xml").write_text(f"<Events>{warnings}</Events>", encoding="utf-8")
        here = self.path
        self.script(
            "quorvis",
            f'cp "$2" "{here}/seen_config"; cp "$8" "{here}/seen_signatures"\n'
            f'cat "{here}/software.xml" >"$4"; cat "{here}/warnings.xml" >"$6"',
        )

    def seen(self, name: str) -> bytes:
        return (self.path / f"seen_{name}").read_bytes()

    def library(self) -> zav.Library:
        return zav.Library("tests", toolkit=self.path, temp_directory=self.temp)


@pytest.fixture
def toolkit(tmp_path: pathlib.Path):
    made = Toolkit(tmp_path)
    yield made
    assert list(made.temp.iterdir()) == []


@pytest.fixture
def bundled() -> zav.Library:
    """The library with the scanners of the build."""
    return zav.Library("tests", toolkit=os.environ["ZAV_TEST_TOOLKIT"])
