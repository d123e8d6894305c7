"""The guests' kernels and first file systems, from packages of Debian that are kept below the cache directory."""
import io
import lzma
import os
import re
import subprocess
import sys

import inventory
from cpio import Archive

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../software"))
import trees
from mirror import Mirror, MirrorFault, sources_of_machine

KERNEL_PACKAGES = {"ppc64el": "linux-image-powerpc64le"}
NAMES_OF_DEVICES = ("/usr/share/misc/pci.ids", "/usr/share/misc/usb.ids")
# Busybox's programs that the scripts use without naming busybox.
INIT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "init")


class GuestFault(Exception):
    """The packages do not have what the laboratory needs."""


class Distribution:
    """The packages of a suite and an architecture."""

    def __init__(self, cache, suite, architecture):
        self.architecture = architecture
        self.directory = os.path.join(cache, f"{suite}-{architecture}")
        # Of an architecture that is not the machine's own, mirrors keep the updates less carefully than the release.
        own = subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True, check=True).stdout.strip()
        sources = None
        if architecture != own:
            release = re.compile(r" %s main$" % suite)
            sources = "".join(line + "\n" for line in sources_of_machine(suite).splitlines() if release.search(line))
        self.mirror = Mirror(suite, self.directory, sources, architecture)

    def tree(self, label, names):
        """The unpacked packages of these names."""
        packages = self.mirror.resolve(names)
        missing = sorted(set(names) - set(packages))
        if missing:
            raise GuestFault(f"{self.mirror.suite} has no package {', '.join(missing)} for {self.architecture}")
        packages = [packages[name] for name in names]
        directory = os.path.join(self.directory, "trees", label)
        contents = "\n".join(package.archive_name() for package in packages)
        written = os.path.join(directory, "contents")
        with trees.locked(directory):
            if not (os.path.exists(written) and open(written).read() == contents):
                absent = self.mirror.fetch(packages)
                if absent:
                    self.mirror.forget_index()
                    raise MirrorFault(f"the mirror has changed, run again; it does not have {absent[0].name}")
                trees.unpack([self.mirror.archive(package) for package in packages], os.path.join(directory, "root"))
                with open(written, "w") as file:
                    file.write(contents)
        return os.path.join(directory, "root")

    def kernel(self):
        wanted = KERNEL_PACKAGES.get(self.architecture, "linux-image-" + self.architecture)
        image = [name for name in self.mirror.with_dependencies([wanted]) if re.match(r"linux-image-\d", name)]
        if len(image) != 1:
            raise GuestFault(f"{wanted} does not depend on one kernel: {image}")
        return Kernel(self.tree("kernel", image))

    def busybox(self):
        return self.tree("busybox", ["busybox-static"])

    def programs(self, names):
        """A tree of these packages and all that they need."""
        return self.tree("programs-" + "-".join(sorted(names)), self.mirror.with_dependencies(names))


class Kernel:
    def __init__(self, tree):
        self.modules = os.path.join(tree, "lib/modules")
        if not os.path.isdir(self.modules):
            self.modules = os.path.join(tree, "usr/lib/modules")
        self.release = os.listdir(self.modules)[0]
        boot = os.path.join(tree, "boot")
        self.image = next(os.path.join(boot, name) for name in os.listdir(boot) if re.match(r"vmlinu[xz]-", name))
        self.root = os.path.dirname(os.path.dirname(self.modules))

    def files_of(self, modules):
        """The files of these modules and of those that they need, in the order of loading."""
        directory = os.path.join(self.modules, self.release)
        dependencies = os.path.join(directory, "modules.dep")
        if not os.path.exists(dependencies):
            environment = {**os.environ, "PATH": os.environ.get("PATH", "") + ":/usr/sbin:/sbin"}
            subprocess.run(["depmod", "--basedir", self.root, self.release], check=True, env=environment)
        with open(dependencies) as file:
            needed = dict(line.rstrip("\n").split(":", 1) for line in file)
        by_name = {_module_name(path): path for path in needed}
        with open(os.path.join(directory, "modules.builtin")) as file:
            builtin = {_module_name(line.strip()) for line in file}
        ordered = []
        for module in modules:
            name = module.split(" ")[0].replace("-", "_")
            if name in builtin:
                continue
            if name not in by_name:
                raise GuestFault(f"the kernel {self.release} has no module {name}")
            # The last one that is named needs none of the others.
            for path in needed[by_name[name]].split()[::-1] + [by_name[name]]:
                options = module.partition(" ")[2] if path == by_name[name] else ""
                if not any(path == other for other, _ in ordered):
                    ordered.append((path, options))
        return [(os.path.join(directory, path), options) for path, options in ordered]


def _module_name(path):
    return os.path.basename(path).split(".")[0].replace("-", "_")


def first_file_system(machine, distribution, kernel, scanner):
    """The content of the guest's first file system."""
    made = io.BytesIO()
    archive = Archive(made)
    for directory in ("proc", "sys", "dev", "run", "tmp", "mnt", "etc", "var", "root", "lab/out"):
        archive.directory(directory)
    archive.device("dev/console", 5, 1)
    archive.device("dev/null", 1, 3, 0o666)
    _copy(archive, os.path.join(distribution.busybox(), "bin/busybox"), "bin/busybox", 0o755)
    _copy(archive, INIT, "init", 0o755)
    _copy(archive, scanner, "lab/quorvah", 0o755)
    for path in NAMES_OF_DEVICES:
        _copy(archive, os.path.realpath(path), path.lstrip("/"))
    archive.write("etc/passwd", b"root:x:0:0:root:/root:/bin/sh\nguest:x:1000:1000:Guest:/home/guest:/bin/sh\n")
    archive.write("etc/group", b"root:x:0:\nguest:x:1000:\n")
    archive.write("lab/groups.xml", _configuration())
    archive.write("lab/report", machine.report.encode() + b"\n")
    archive.write("lab/guest", machine.guest.encode())
    if machine.user:
        archive.write("lab/user", b"")
    loading = []
    for path, options in kernel.files_of(machine.modules):
        name = "lab/modules/" + _module_name(path) + ".ko"
        with open(path, "rb") as file:
            content = file.read()
        archive.write(name, lzma.decompress(content) if path.endswith(".xz") else content)
        loading.append(f"/{name} {options}\n")
    archive.write("lab/load", "".join(loading).encode())
    if machine.packages:
        archive.tree(distribution.programs(machine.packages))
    archive.close()
    return made.getvalue()


def _copy(archive, path, name, mode=0o644):
    with open(path, "rb") as file:
        archive.write(name, file.read(), mode)


def _configuration():
    groups = "".join(f'<Group Name="{name}"/>' for name in inventory.groups())
    return f"<Configuration>{groups}</Configuration>".encode()
