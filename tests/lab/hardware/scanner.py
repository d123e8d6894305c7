"""The scanner for each architecture."""
import os
import subprocess

from inventory import REPOSITORY


class ScannerFault(Exception):
    """There is no scanner for an architecture."""


def for_architecture(architecture, given, distribution):
    own = subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True, check=True).stdout.strip()
    if architecture == own:
        return given or _built_last()
    raise ScannerFault(f"no scanner for {architecture}")


def _built_last():
    built = [os.path.join(REPOSITORY, "build", preset, "bin/quorvah") for preset in ("release", "test", "gcc", "debug")]
    built = [path for path in built if os.path.exists(path)]
    if not built:
        raise ScannerFault("quorvah is not built; run 'scripts/build test quorvah', or give --quorvah")
    return max(built, key=os.path.getmtime)
