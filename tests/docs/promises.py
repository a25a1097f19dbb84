"""Whether what holds each promise of docs/reliability.md is there: tests, fuzz targets, labels.

usage: promises.py ROOT
"""

import pathlib
import re
import sys

ROW = re.compile(r"^\|(?P<promise>[^|]+)\|(?P<holders>[^|]+)\|$", re.MULTILINE)


def texts(root, *patterns):
    return "\n".join(path.read_text() for pattern in patterns for path in root.glob(pattern))


def exists(root, name, targets, labels):
    """A path or pattern below the root, a test's file wherever it is, a fuzz target, a label or a
    variable of the tests."""
    if "/" in name:
        return any(root.glob(name)) or any(root.glob(name + ".cpp"))
    if name.endswith("Test"):
        return any(root.glob(f"tests/**/{name}.cpp"))
    return name in targets or name.partition("=")[0] in labels


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    root = pathlib.Path(sys.argv[1])
    targets = re.findall(r"vesk_fuzz_target\((\w+) ", (root / "fuzz/CMakeLists.txt").read_text())
    labels = set(re.findall(r"\w+", texts(root, "tests/**/CMakeLists.txt", "tests/unit/soak/*.cpp")))
    rows = [row for row in ROW.finditer((root / "docs/reliability.md").read_text())
            if not set(row["promise"]) <= set(" -") and row["holders"].strip() != "held by"]
    problems = []
    for row in rows:
        names = re.findall(r"`([^`]+)`", row["holders"])
        if not names and "all tests" not in row["holders"]:
            problems.append(f"nothing is said to hold: {row['promise'].strip()}")
        problems += [f"no such test: {name}" for name in names
                     if not exists(root, name, targets, labels)]
    print("\n".join(problems + [f"{len(rows)} promises, {len(problems)} problems"]))
    sys.exit(1 if problems or not rows else 0)


main()
