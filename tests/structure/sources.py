"""What the checkers share: which files they read, and how they tell what they found."""

import pathlib
import sys


def source_files(root):
    """Headers and sources of the libraries, the program and the Python module, sorted."""
    return sorted(path for top in ("src", "tools", "python/src") for path in (root / top).rglob("*")
                  if path.suffix in (".h", ".cpp"))


def run(usage, check, what):
    """The whole of a checker `check(root)`, which returns problems and how much it has read."""
    if len(sys.argv) != 2:
        sys.exit(usage)
    problems, count = check(pathlib.Path(sys.argv[1]).resolve())
    print("\n".join(problems + [f"{count} {what} read, {len(problems)} problems"]))
    sys.exit(1 if problems or count == 0 else 0)
