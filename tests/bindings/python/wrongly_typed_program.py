"""What mypy --strict refuses: each line that ends in a comment, and no other."""

import zav

library = zav.Library("tests")
groups = library.hardware(["Processor"]).groups
name: str = groups["Processor"][0]["Name"]  # wrong: it may be None
speed = groups["Processor"][0]["Sped"]  # wrong: there is no such field
disks = groups["Disks"]  # wrong: there is no such group
library.hardware(groups=3)  # wrong: not a list
