"""The version of upstream in the version of a Debian package.

The rule, in this order:
1. The epoch and the Debian revision are removed: 1:9.2p1-2+deb12u5 is 9.2p1.
2. What follows "+really" is the version: 1.3.dfsg+really1.3.1 is 1.3.1.
3. Marks of repackaging and of updates are removed from the end, with their numbers: +dfsg1, .dfsg, +ds, ~ds1, .ds4, +repack,
   ~deb12u1, +deb12u1, +~3.5.14 and +~cs24.27.18 (bundled archives).

Where a version is built in another way, the table gives an expression for that product.

In suites that the table does not list, two spellings of a version are the same if they differ only in zeros at the end (5.2 and
5.2.0), or in how a version before a release is marked (2.22.0~beta2, 2.22.0-beta2 and 2.22.0b2).
"""
import re

_MARK = re.compile(r"([+~.-](dfsg|ds|repack|debian|really)[.\d]*|[+~]deb\d+u\d+|\+~.*)$")


_BEFORE_RELEASE = re.compile(r"[~._-]?(rc|beta|alpha|dev|pre|a|b)[._-]?(?=\d|$)")


def spelled_alike(one, other):
    return _plain(one) == _plain(other)


def _plain(version):
    numbers, marks = re.fullmatch(r"([\d.]*)(.*)", version, re.S).groups()
    mark = _BEFORE_RELEASE.sub(lambda match: "~" + match[1][0], marks)
    return re.sub(r"(\.0+)+$", "", numbers.rstrip(".")) + mark


def upstream(package_version):
    version = re.sub(r"^\d+:", "", package_version)
    version = re.sub(r"-[^-]*$", "", version)
    version = version.split("+really")[-1]
    previous = None
    while previous != version:
        previous = version
        version = _MARK.sub("", version)
    return version
