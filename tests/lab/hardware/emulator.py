"""Runs a machine under qemu and returns what its guest reports."""
import io
import os
import subprocess
import tarfile
import time

import guest

PROGRAMS = {"amd64": "qemu-system-x86_64", "arm64": "qemu-system-aarch64", "riscv64": "qemu-system-riscv64",
            "ppc64el": "qemu-system-ppc64", "s390x": "qemu-system-s390x"}
# One thread for all processors: what they find does not depend on the host, and a host of two cores is not slower for it.
ACCELERATOR = "tcg"
# What the guest says before it runs the machine's commands.
PREPARING = "laboratory: preparing"


class EmulatorFault(Exception):
    """The guest did not report."""


class Report:
    """The files that the guest sent: root.xml, user.xml and logs."""

    def __init__(self, files):
        self.files = files

    @staticmethod
    def received(archive):
        report = Report({})
        with tarfile.open(fileobj=io.BytesIO(archive), mode="r:gz") as files:
            for member in files:
                if member.isfile():
                    report.files[member.name.removeprefix("./")] = files.extractfile(member).read()
        return report

    @staticmethod
    def kept(directory):
        report = Report({})
        for name in os.listdir(directory):
            with open(os.path.join(directory, name), "rb") as file:
                report.files[name] = file.read()
        return report

    def write(self, directory):
        os.makedirs(directory)
        for name, content in self.files.items():
            with open(os.path.join(directory, name), "wb") as file:
                file.write(content)

    def text(self, name):
        return self.files.get(name, b"").decode(errors="replace")


def run(machine, distribution, scanner, directory):
    """The report of the machine. Everything that it needs is written into the directory."""
    kernel = distribution.kernel()
    initrd = os.path.join(directory, "initrd")
    with open(initrd, "wb") as file:
        file.write(guest.first_file_system(machine, distribution, kernel, scanner))
    command = [PROGRAMS[machine.architecture], "-nodefaults", "-no-user-config", "-display", "none", "-no-reboot",
               "-accel", ACCELERATOR, "-kernel", kernel.image, "-initrd", initrd,
               "-append", machine.kernel_arguments, *machine.arguments(directory)]
    if machine.monitor:
        command += ["-monitor", "stdio"]
    with open(os.path.join(directory, "command"), "w") as file:
        file.write("\n".join(command) + "\n")
    with open(os.path.join(directory, "emulator.log"), "w") as log:
        process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=log, stderr=log, cwd=directory, text=True)
        try:
            status = _waited(process, machine, directory)
        finally:
            process.kill()
            process.wait()
    report = os.path.join(directory, "report")
    try:
        with open(report, "rb") as file:
            return Report.received(file.read()), kernel
    except (OSError, EOFError, tarfile.TarError) as fault:
        raise EmulatorFault(f"{machine.name}: no report (status {status}): {fault}\n{_end(directory)}") from None


def _waited(process, machine, directory):
    """The status of the emulator. As soon as the guest prepares itself, the emulator's monitor gets the machine's commands."""
    deadline = time.monotonic() + machine.time_limit
    commands = "".join(command + "\n" for command in machine.monitor)
    while process.poll() is None:
        if time.monotonic() > deadline:
            raise EmulatorFault(f"{machine.name}: no end after {machine.time_limit} s\n{_end(directory)}")
        if commands and PREPARING in _text(os.path.join(directory, "console")):
            process.stdin.write(commands)
            process.stdin.flush()
            commands = ""
        time.sleep(0.2)
    return process.returncode


def _text(path):
    if not os.path.exists(path):
        return ""
    with open(path, errors="replace") as file:
        return file.read()


def _end(directory):
    """The last lines of what the emulator and the guest's console said."""
    lines = []
    for name in ("emulator.log", "console"):
        lines += _text(os.path.join(directory, name)).splitlines()[-15:]
    return "\n".join(lines)
