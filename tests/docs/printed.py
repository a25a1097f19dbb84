"""Whether snippets print what the documentation shows."""

import re


def is_expected(found, expected):
    """Whether the lines are those, where "..." is anything, on a line of its own any lines."""
    pattern = ""
    for line in expected.rstrip("\n").split("\n"):
        line = line.rstrip()
        parts = map(re.escape, line.split("..."))
        pattern += "(?:.*\n)*?" if line == "..." else ".*".join(parts) + "\n"
    text = "".join(line.rstrip() + "\n" for line in found.splitlines())
    return re.fullmatch(pattern, text) is not None


def without_times(text):
    return re.sub(r"\b\d+\.\d+(?= m?s\b)", "#", text)


def without_figures(text):
    """As figures vary in width, so do the spaces before them."""
    return re.sub(r" +", " ", re.sub(r"\d+(\.\d+)?", "#", text))
