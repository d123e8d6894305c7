"""Unpacked packages, without a package database and without usr/share/doc."""
import contextlib
import fcntl
import hashlib
import os
import shutil
import subprocess
import tempfile

MAX_LINKS = 40
# One of three products is moved, always the same ones.
PLACES = ("opt/{name}-{version}", "usr/local", "srv/app", "home/user/{name}")
_MOVED = ("usr/", "bin/", "sbin/", "lib/", "lib64/", "lib32/", "libx32/")


@contextlib.contextmanager
def locked(directory):
    """Keeps other runs of the laboratory out of a directory of the cache."""
    os.makedirs(directory, exist_ok=True)
    with open(os.path.join(directory, "lock"), "w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        yield


def new_place(name, version):
    """Where a product is moved in the second mode, or None if it stays."""
    digest = hashlib.sha256(name.encode()).digest()
    if digest[0] % 3 != 0:
        return None
    return PLACES[digest[1] % len(PLACES)].format(name=name, version=version)


def moved_path(path, place):
    """bin/x and usr/bin/x are bin/x below the new place; etc and var stay."""
    if place is None:
        return path
    for prefix in _MOVED:
        if path.startswith(prefix):
            return f"{place}/{path[4:] if prefix == 'usr/' else path}"
    return path


def unpack(archives, tree, place=None):
    """Makes the directory tree from the archives, completely or not at all."""
    parent = os.path.dirname(tree)
    os.makedirs(parent, exist_ok=True)
    made = tempfile.mkdtemp(prefix=".new-", dir=parent)
    os.chmod(made, 0o755)
    try:
        for archive in archives:
            with tempfile.TemporaryDirectory(prefix=".unpacked-", dir=parent) as staging:
                subprocess.run(["dpkg-deb", "-x", archive, staging], check=True)
                _remove_documentation(staging)
                _merge(staging, made, place)
        if os.path.lexists(tree):
            shutil.rmtree(tree)
        os.rename(made, tree)
    except BaseException:
        shutil.rmtree(made, ignore_errors=True)
        raise


def _remove_documentation(root):
    path = root
    for name in ("usr", "share", "doc"):
        path = os.path.join(path, name)
        if not os.path.isdir(path) or os.path.islink(path):
            return
    shutil.rmtree(path)


def _merge(staging, root, place):
    """Moves every file to its place below root. Links of the packages are followed within root only."""
    for directory, subdirectories, files in os.walk(staging):
        relative = os.path.relpath(directory, staging)
        for name in subdirectories + files:
            source = os.path.join(directory, name)
            target = moved_path(os.path.normpath(os.path.join(relative, name)), place)
            mode = os.lstat(source).st_mode
            if os.path.isdir(source) and not os.path.islink(source):
                _directory(root, target, mode & 0o7777)
                continue
            parent = _directory(root, os.path.dirname(target))
            destination = os.path.join(parent, os.path.basename(target))
            if os.path.isdir(destination) and not os.path.islink(destination):
                continue
            if os.path.islink(source):
                _link(_moved_link(os.readlink(source), place), destination)
            else:
                os.replace(source, destination)


def _moved_link(text, place):
    if place is None or not text.startswith("/"):
        return text
    return "/" + moved_path(text[1:], place)


def _link(text, destination):
    if os.path.lexists(destination):
        os.unlink(destination)
    os.symlink(text, destination)


def _directory(root, path, mode=0o755):
    """The real directory of a path below root, made if it is missing."""
    steps = [step for step in path.split("/") if step]
    at = []
    links = 0
    while steps:
        step = steps.pop(0)
        if step == ".":
            continue
        if step == "..":
            at = at[:-1]
            continue
        there = os.path.join(root, *at, step)
        if os.path.islink(there):
            links += 1
            if links > MAX_LINKS:
                raise OSError(f"too many links: {path}")
            text = os.readlink(there)
            at = [] if text.startswith("/") else at
            steps = [part for part in text.split("/") if part] + steps
            continue
        if not os.path.isdir(there):
            os.mkdir(there)
            os.chmod(there, mode if not steps else 0o755)
        at.append(step)
    return os.path.join(root, *at)
