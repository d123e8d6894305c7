#!/usr/bin/env python3
"""Prints the processors of this machine and the version of the installed bash.

With an argument, the scanners are in that directory.
"""
import logging
import sys

import zav

BASH = """
<Signature guid='bash' name='GNU Bash'>
  <Match><Package id='p' name='bash'/></Match>
  <Output><Variable name='version' value='${p.upstream}'/></Output>
</Signature>
"""


def main() -> None:
    logging.basicConfig(format="%(name)s: %(message)s")
    toolkit = sys.argv[1] if len(sys.argv) > 1 else None
    with zav.Library("my product", toolkit=toolkit) as library:
        hardware = library.hardware(["Processor"])
        for processor in hardware.groups["Processor"]:
            print(processor["DeviceID"], processor["Name"])
        for result in library.software(BASH).results:
            print(result.guid, result.variables["version"])


main()
