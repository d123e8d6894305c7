"""The version of upstream in the version of a Debian package.

The rule, in this order:
1. The epoch and the Debian revision are removed: 1:9.2p1-2+deb12u5 is 9.2p1.
2. What follows "+really" is the version: 1.3.dfsg+really1.3.1 is 1.3.1.
3. Marks of repackaging and of updates are removed from the end, with their numbers: +dfsg1, .dfsg, +ds, ~ds1, .ds4, +repack,
   ~deb12u1, +deb12u1, +~3.5.14 and +~cs24.27.18 (bundled archives).

Where a version is built in another way, the table gives an expression for that product.
"""
import re

_MARK = re.compile(r"([+~.-](dfsg|ds|repack|debian|really)[.\d]*|[+~]deb\d+u\d+|\+~.*)$")


def upstream(package_version):
    version = re.sub(r"^\d+:", "", package_version)
    version = re.sub(r"-[^-]*$", "", version)
    version = version.split("+really")[-1]
    previous = None
    while previous != version:
        previous = version
        version = _MARK.sub("", version)
    return version
