"""libraries.py CACHE: fetches the libraries of both formats' projects from a suite of Debian that has them, and unpacks them
below CACHE. Prints the directory. The status is 75 if the mirror does not answer."""
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../../lab/software"))
import mirror as mirrors

SUITE = "trixie"
# CycloneDX in Python, SPDX in Go, and what they need.
PACKAGES = ["python3-cyclonedx-lib", "python3-packageurl", "python3-py-serializable", "python3-sortedcontainers",
            "python3-license-expression", "python3-boolean", "python3-defusedxml",
            "golang-github-spdx-tools-golang-dev", "golang-github-anchore-go-struct-converter-dev",
            "golang-github-spdx-gordf-dev", "golang-k8s-sigs-yaml-dev", "golang-1.24-go", "golang-1.24-src"]


def main():
    cache = sys.argv[1]
    try:
        mirror = mirrors.Mirror(SUITE, cache)
        packages = mirror.resolve(PACKAGES)
        missing = sorted(set(PACKAGES) - set(packages))
        if missing:
            sys.exit(f"the suite {SUITE} has no package {', '.join(missing)}")
        mirror.fetch(packages.values())
    except mirrors.MirrorUnreachable as fault:
        print(f"the mirror of this machine's apt does not answer, so no library is there to read with: {fault}", file=sys.stderr)
        sys.exit(75)
    version = "-".join(sorted(package.archive_name() for package in packages.values()))
    directory = os.path.join(cache, SUITE, "unpacked")
    stamp = os.path.join(directory, "complete")
    if not os.path.exists(stamp) or open(stamp).read() != version:
        subprocess.run(["rm", "-rf", directory], check=True)
        for package in packages.values():
            subprocess.run(["dpkg-deb", "-x", mirror.archive(package), directory], check=True)
        with open(stamp, "w") as file:
            file.write(version)
    print(directory)


main()
