"""The machines of the laboratory: machines/NAME.toml, with what they are known to have in machines/NAME.expected."""
import os
import shlex
import tomllib

import expectations
import images

MACHINES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "machines")
DEFAULTS = {"architecture": "amd64", "suite": "bookworm", "sample": False, "user": False, "modules": [], "packages": [],
            "image": [], "guest": "", "monitor": [], "time_limit": 480}


class MachineFault(Exception):
    """A machine's file names something that does not exist."""


class Machine:
    def __init__(self, name):
        self.name = name
        with open(os.path.join(MACHINES, name + ".toml"), "rb") as file:
            table = tomllib.load(file)
        unknown = set(table) - set(DEFAULTS) - {"about", "emulator", "report", "kernel_arguments", "qemu"}
        if unknown:
            raise MachineFault(f"{name}.toml: unknown: {', '.join(sorted(unknown))}")
        for key, value in {**DEFAULTS, **table}.items():
            setattr(self, key, value)

    def arguments(self, directory):
        """The part of the emulator's command line that describes the hardware. Makes the images that it names."""
        paths = {image["name"]: images.make(image, directory) for image in self.image}
        lines = [line for line in self.qemu.splitlines() if not line.lstrip().startswith("#")]
        arguments = shlex.split("\n".join(lines))
        for name, path in paths.items():
            arguments = [argument.replace("{" + name + "}", path) for argument in arguments]
        return [argument.replace("{directory}", directory) for argument in arguments]

    def expectations(self, kernel):
        return expectations.read(os.path.join(MACHINES, self.name + ".expected"), {"kernel": kernel})


def all_machines():
    names = sorted(name[:-5] for name in os.listdir(MACHINES) if name.endswith(".toml"))
    return [Machine(name) for name in names]
