"""The newest packages of a suite, from the mirror that this machine's apt uses.

apt itself resolves the names, checks the signature of the index and the checksums of the packages. It works on lists and an
archive below the cache directory, never on those of the machine.
"""
import fnmatch
import json
import os
import re
import subprocess
import time

KEYRING = "/usr/share/keyrings/debian-archive-keyring.gpg"
INDEX_LIFETIME_S = 24 * 3600
# What apt says when it did not get to the mirror. Everything else is a fault of what it got.
UNREACHABLE = re.compile(r"(Could not|Unable to) (resolve|connect|wait)|Temporary failure|timed out|Connection (refused|failed|reset)|"
                         r"unreachable|Cannot initiate|No route|\b(403|407|502|503|504)  [A-Z]")
NOT_THERE = re.compile(r"404  Not Found|File not found")
PACKAGES_PER_DOWNLOAD = 50
# The machine's own suites have one of these names. "stable" and the like are other names of one of them.
KNOWN_SUITES = ("bookworm", "trixie", "forky", "sid", "unstable", "testing", "stable", "oldstable", "oldoldstable")


class MirrorUnreachable(Exception):
    """The mirror does not answer, and nothing is in the cache."""


class MirrorFault(Exception):
    """The mirror answers with something that must not be used, or does not have what it lists."""


class Package:
    @staticmethod
    def fields(paragraph):
        return dict(re.findall(r"^(Package|Version|Source|Size|Architecture): (.*)$", paragraph, re.M))

    def __init__(self, fields):
        self.name = fields["Package"]
        self.version = fields["Version"]
        self.source = fields.get("Source", self.name).split(" ")[0]
        self.size = int(fields["Size"])
        self.architecture = fields["Architecture"]

    def archive_name(self):
        return f"{self.name}_{self.version.replace(':', '%3a')}_{self.architecture}.deb"


# Suites that have no suites of updates beside them.
WITHOUT_UPDATES = re.compile(r"sid|unstable|experimental|.*-backports")


def sources_of_machine(suite):
    """The Debian lines of the machine's apt, with the suite put in place of the machine's own."""
    targets = subprocess.run(
        ["apt-get", "--no-release-info", "indextargets", "--format", "$(REPO_URI) $(RELEASE) $(COMPONENT)",
         "Identifier: Packages"],
        capture_output=True, text=True, check=True).stdout
    own = re.compile(r"(%s)(-updates|-security)?$" % "|".join(KNOWN_SUITES))
    lines = set()
    for target in targets.splitlines():
        uri, release, component = target.split(" ")
        match = own.match(release)
        if match and component == "main" and not (match[2] and WITHOUT_UPDATES.fullmatch(suite)):
            trust = f"[signed-by={KEYRING}] " if os.path.exists(KEYRING) else ""
            lines.add(f"deb {trust}{uri} {suite}{match[2] or ''} main\n")
    if not lines:
        raise MirrorUnreachable("the configuration of this machine's apt names no mirror of Debian")
    return "".join(sorted(lines))


class Mirror:
    def __init__(self, suite, cache, sources=None, architecture=""):
        """cache: the directory of the suite and the architecture. sources: lines of sources.list; by default, those of the
        machine. architecture: by default, the machine's own one."""
        self.suite = suite
        self.architecture = architecture
        self.directory = os.path.join(cache, "apt")
        self.archives = os.path.join(cache, "packages")
        self.lists = os.path.join(self.directory, "lists")
        for directory in (self.lists + "/partial", self.directory + "/cache/archives/partial", self.archives):
            os.makedirs(directory, exist_ok=True)
        self.index_note = ""
        self._configure(sources or sources_of_machine(suite))
        self._update()
        self._names = None

    def _configure(self, sources):
        self._write("sources.list", sources)
        self._write("status", "")
        architecture = ""
        if self.architecture:
            architecture = f'APT::Architecture "{self.architecture}";\nAPT::Architectures {{ "{self.architecture}"; }};\n'
        # Where root runs apt, it would fetch as a user who may not write below a home directory.
        self._write("apt.conf", f"""
{architecture}Dir::State "{self.directory}";
Dir::State::status "{self.directory}/status";
Dir::State::lists "{self.lists}";
Dir::Cache "{self.directory}/cache";
Dir::Etc::SourceList "{self.directory}/sources.list";
Dir::Etc::SourceParts "/dev/null";
APT::Sandbox::User "root";
Acquire::Languages "none";
Acquire::Retries "2";
""")

    def _write(self, name, text):
        path = os.path.join(self.directory, name)
        if os.path.exists(path):
            with open(path) as file:
                if file.read() == text:
                    return
        with open(path, "w") as file:
            file.write(text)

    def _run(self, *command, cwd=None):
        environment = {**os.environ, "APT_CONFIG": os.path.join(self.directory, "apt.conf"), "LC_ALL": "C"}
        return subprocess.run(command, capture_output=True, text=True, env=environment, cwd=cwd)

    def _update(self):
        stamp = os.path.join(self.directory, "updated")
        sources = os.path.join(self.directory, "sources.list")
        updated = os.path.getmtime(stamp) if os.path.exists(stamp) else 0
        if updated > time.time() - INDEX_LIFETIME_S and updated >= os.path.getmtime(sources):
            return
        update = self._run("apt-get", "-q", "update", "--error-on=any")
        if update.returncode == 0:
            open(stamp, "w").close()
            return
        fault = _problems(update.stderr)
        if not UNREACHABLE.search(fault):
            raise MirrorFault(fault)
        if not updated:
            raise MirrorUnreachable(fault)
        self.index_note = time.strftime("mirror out of reach; the index is of %Y-%m-%d %H:%M", time.localtime(updated))

    def names(self):
        if self._names is None:
            self._names = sorted(self._run("apt-cache", "pkgnames").stdout.split())
        return self._names

    def resolve(self, patterns):
        """{pattern: package}, without the patterns that no package matches. A pattern is a name, a name with wildcards, or an
        expression after a ~; of the packages that match, the one whose name sorts last, its numbers by value, is taken."""
        known = self._resolved()
        missing = sorted(pattern for pattern in patterns if pattern not in known)
        wanted = {pattern: self._name(pattern) for pattern in missing}
        names = sorted({name for name in wanted.values() if name})
        paragraphs = {}
        if names:
            shown = self._run("apt-cache", "show", "--no-all-versions", "--", *names).stdout
            for paragraph in shown.split("\n\n"):
                if paragraph.startswith("Package: "):
                    fields = Package.fields(paragraph)
                    paragraphs[fields["Package"]] = fields
        known.update({pattern: paragraphs.get(name) for pattern, name in wanted.items()})
        if missing:
            self._write("resolved.json", json.dumps(known))
        return {pattern: Package(known[pattern]) for pattern in patterns if known[pattern]}

    def _resolved(self):
        """What was resolved from this index before: apt takes seconds to read it."""
        path = os.path.join(self.directory, "resolved.json")
        if not os.path.exists(path) or os.path.getmtime(path) < os.path.getmtime(os.path.join(self.directory, "updated")):
            return {}
        with open(path) as file:
            return json.load(file)

    def _name(self, pattern):
        if pattern.startswith("~"):
            expression = re.compile(pattern[1:])
            matching = [name for name in self.names() if expression.fullmatch(name)]
        elif re.search(r"[*?\[]", pattern):
            matching = fnmatch.filter(self.names(), pattern)
        else:
            return pattern
        return max(matching, key=_by_numbers, default=None)

    def with_dependencies(self, names):
        """The names of everything that apt would install for these packages on a system that has nothing."""
        install = self._run("apt-get", "--simulate", "--no-install-recommends", "install", "--", *names)
        if install.returncode != 0:
            raise MirrorFault(_problems(install.stderr))
        return re.findall(r"^Inst (\S+) ", install.stdout, re.M)

    def archive(self, package):
        return os.path.join(self.archives, package.archive_name())

    def fetch(self, packages):
        """Downloads what is not in the cache. apt verifies the checksums. Returns the packages that the index lists and the
        mirror does not have."""
        missing = [package for package in packages if not os.path.exists(self.archive(package))]
        absent = []
        for start in range(0, len(missing), PACKAGES_PER_DOWNLOAD):
            some = missing[start:start + PACKAGES_PER_DOWNLOAD]
            fault = self._download(some)
            if NOT_THERE.search(fault):
                absent += [package for package in some if NOT_THERE.search(self._download([package]))]
        return absent

    def _download(self, packages):
        """The message of what the mirror does not have, or an empty one."""
        partial = os.path.join(self.archives, "partial")
        os.makedirs(partial, exist_ok=True)
        packages = [package for package in packages if not os.path.exists(self.archive(package))]
        if not packages:
            return ""
        names = [f"{package.name}={package.version}" for package in packages]
        download = self._run("apt-get", "-q", "download", *names, cwd=partial)
        if download.returncode == 0:
            for package in packages:
                os.replace(os.path.join(partial, package.archive_name()), self.archive(package))
            return ""
        fault = _problems(download.stderr)
        if NOT_THERE.search(fault):
            return fault
        raise (MirrorUnreachable if UNREACHABLE.search(fault) else MirrorFault)(fault)

    def forget_index(self):
        """The next run reads the index of the mirror again."""
        os.unlink(os.path.join(self.directory, "updated"))


def _problems(messages):
    """The lines with errors and warnings, without those on the progress."""
    return "\n".join(line for line in messages.splitlines() if re.match(r"(E|W|Error|Warning): ", line)) or messages


def with_other_numbers(name):
    """The pattern of the names that differ in their numbers: of libssl3t64, libssl1.1 is one."""
    if re.search(r"[*?\[]", name):
        return name
    parts = re.split(r"(\d+(?:\.\d+)*)", re.sub(r"(\d)t64$", r"\1", name))
    return "~" + "".join(r"\d+(\.\d+)*" if position % 2 else re.escape(part) for position, part in enumerate(parts)) + "(t64)?"


def _by_numbers(name):
    return [(int(part), "") if part.isdigit() else (0, part) for part in re.split(r"(\d+)", name)]
