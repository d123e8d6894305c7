"""Archives of the form that the kernel unpacks as its first file system (newc)."""
import os
import stat


class Archive:
    def __init__(self, file):
        self.file = file
        self.inode = 0
        self.names = set()

    def directory(self, name):
        parent = os.path.dirname(name)
        if parent and parent not in self.names:
            self.directory(parent)
        if name not in self.names:
            self._entry(name, stat.S_IFDIR | 0o755)

    def write(self, name, content, mode=0o644):
        self.directory(os.path.dirname(name))
        self._entry(name, stat.S_IFREG | mode, content)

    def link(self, name, target):
        self.directory(os.path.dirname(name))
        self._entry(name, stat.S_IFLNK | 0o777, target.encode())

    def device(self, name, major, minor, mode=0o600):
        self.directory(os.path.dirname(name))
        self._entry(name, stat.S_IFCHR | mode, device=(major, minor))

    def tree(self, root):
        """Everything below a directory. Links to directories stay links."""
        for directory, names, files in os.walk(root):
            below = os.path.relpath(directory, root)
            prefix = "" if below == "." else below + "/"
            for name in sorted(names + files):
                path = os.path.join(directory, name)
                if os.path.islink(path):
                    self.link(prefix + name, os.readlink(path))
                elif os.path.isfile(path):
                    with open(path, "rb") as content:
                        self.write(prefix + name, content.read(), os.stat(path).st_mode & 0o7777)

    def close(self):
        self._entry("TRAILER!!!", 0)

    def _entry(self, name, mode, content=b"", device=(0, 0)):
        if not name:
            return
        if name in self.names:
            return
        self.names.add(name)
        self.inode += 1
        links = 2 if stat.S_ISDIR(mode) else 1
        fields = (self.inode, mode, 0, 0, links, 0, len(content), 0, 0, *device, len(name.encode()) + 1, 0)
        header = b"070701" + b"".join(b"%08X" % field for field in fields)
        self._padded(header + name.encode() + b"\0")
        self._padded(content)

    def _padded(self, block):
        self.file.write(block)
        self.file.write(b"\0" * (-len(block) % 4))
