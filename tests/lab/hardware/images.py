"""The disks of the machines."""
import os
import subprocess
import tempfile

UNITS = {"K": 1 << 10, "M": 1 << 20, "G": 1 << 30}


class ImageFault(Exception):
    """A program did not make what the machine's file asks for."""


def size_of(text):
    return int(text[:-1]) * UNITS[text[-1]] if text[-1] in UNITS else int(text)


def make(image, directory):
    """The path of the image that a machine's file describes: its name, its size, the partition table as sfdisk takes it,
    and what lies where, each made by a command that is given an empty file."""
    path = os.path.join(directory, image["name"] + ".img")
    with open(path, "wb") as file:
        file.truncate(size_of(image["size"]))
    if "table" in image:
        _run(["sfdisk", "--quiet", "--no-reread", "--no-tell-kernel", path], image["table"])
    for content in image.get("content", ()):
        with tempfile.NamedTemporaryFile(dir=directory) as volume:
            volume.truncate(size_of(content["size"]))
            _run(["sh", "-ec", content["make"], "sh", volume.name])
            _copy(volume.name, path, size_of(content["at"]))
    return path


def _run(command, text=""):
    # sfdisk, mke2fs and mkswap are often in no directory of an ordinary user.
    environment = {**os.environ, "PATH": os.environ.get("PATH", "") + ":/usr/sbin:/sbin", "LC_ALL": "C"}
    run = subprocess.run(command, input=text, capture_output=True, text=True, env=environment)
    if run.returncode != 0:
        raise ImageFault(f"{' '.join(command)}: {run.stdout}{run.stderr}")


def _copy(source, target, offset):
    """Copies what is not zero."""
    chunk = 1 << 20
    with open(source, "rb") as volume, open(target, "r+b") as image:
        position = 0
        while block := volume.read(chunk):
            if block.strip(b"\0"):
                image.seek(offset + position)
                image.write(block)
            position += len(block)
