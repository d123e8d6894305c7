"""The scanner for each architecture: that of this machine, or one that a cross compiler makes with libraries of the suite."""
import os
import subprocess

import trees
from inventory import REPOSITORY

# By the name of the architecture in Debian, the triplet of the compiler.
TRIPLETS = {"arm64": "aarch64-linux-gnu", "riscv64": "riscv64-linux-gnu", "ppc64el": "powerpc64le-linux-gnu",
            "s390x": "s390x-linux-gnu"}
PROCESSORS = {"arm64": "aarch64", "ppc64el": "ppc64le"}
# What the scanner links, and what the configuration of the build asks for.
LIBRARIES = ["libexpat1-dev", "libblkid-dev", "zlib1g-dev", "libre2-dev", "nettle-dev", "libgmp-dev", "libyaml-dev"]


class ScannerFault(Exception):
    """There is no scanner for an architecture."""


def for_architecture(architecture, given, distribution):
    own = subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True, check=True).stdout.strip()
    if architecture == own:
        return given or _built_last()
    return _cross_built(architecture, distribution)


def _built_last():
    built = [os.path.join(REPOSITORY, "build", preset, "bin/quorvah") for preset in ("release", "test", "gcc", "debug")]
    built = [path for path in built if os.path.exists(path)]
    if not built:
        raise ScannerFault("quorvah is not built; run 'scripts/build test quorvah', or give --quorvah")
    return max(built, key=os.path.getmtime)


def _cross_built(architecture, distribution):
    triplet = TRIPLETS[architecture]
    libraries = distribution.tree("libraries", LIBRARIES)
    build = os.path.join(REPOSITORY, "build", "lab-" + architecture)
    with trees.locked(build):
        toolchain = os.path.join(build, "toolchain.cmake")
        with open(toolchain, "w") as file:
            file.write(f"""set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR {PROCESSORS.get(architecture, architecture)})
set(CMAKE_C_COMPILER {triplet}-gcc)
set(CMAKE_CXX_COMPILER {triplet}-g++)
set(CMAKE_FIND_ROOT_PATH {libraries})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
""")
        # The packages believe that they are installed in /, and hide directories that a native compiler looks into anyway.
        environment = {**os.environ, "PKG_CONFIG_SYSROOT_DIR": libraries, "PKG_CONFIG_ALLOW_SYSTEM_LIBS": "1",
                       "PKG_CONFIG_ALLOW_SYSTEM_CFLAGS": "1",
                       "PKG_CONFIG_LIBDIR": f"{libraries}/usr/lib/{triplet}/pkgconfig:{libraries}/usr/share/pkgconfig"}
        jobs = subprocess.run([os.path.join(REPOSITORY, "scripts/jobs")], capture_output=True, text=True, check=True).stdout.strip()
        for command in (["cmake", "-G", "Ninja", "-S", REPOSITORY, "-B", build, "--toolchain", toolchain, "-DZAV_CLI=OFF",
                         "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG"],
                        ["cmake", "--build", build, "-j", jobs, "--target", "quorvah"]):
            run = subprocess.run(command, capture_output=True, text=True, env=environment)
            if run.returncode != 0:
                raise ScannerFault(f"quorvah cannot be built for {architecture}:\n{(run.stdout + run.stderr)[-3000:]}")
    return os.path.join(build, "bin/quorvah")
