#!/usr/bin/env python3
"""Checks that every type of the project is defined once.

usage: definitions.py ROOT

Two definitions of one name in two files are no error to compiler or linker: the program takes one
of the two constructors and destructors for both. Types of unnamed namespaces and of functions are
their file's own.
"""

import re

import sources

IGNORED = re.compile(r"""//[^\n]* | /\*.*?\*/ | R"(\w*)\(.*?\)\1" | "(?:\\.|[^"\\\n])*"
                         | '(?:\\.|[^'\\\n])+' | ^[ \t]*\#(?:\\\n|[^\n])*""",
                     re.VERBOSE | re.DOTALL | re.MULTILINE)
# What opens a brace: a namespace, a type, or anything else; and what closes one.
BRACE = re.compile(r"""namespace(?:\s+([\w:]+))?\s*\{
                       | \b(?:struct|class|union|enum)\b(?:\s+(?:class|struct|VESK_API))*
                         \s+(\w+(?:::\w+)*)(?:\s+final)?\s*(?::[^;{()]*)?\{
                       | ([{}])""", re.VERBOSE)
OWN = None


def definitions(text):
    """The qualified names of the types that `text` defines for the whole program."""
    scopes = []
    names = []
    for match in BRACE.finditer(IGNORED.sub(" ", text)):
        namespace, name, brace = match.groups()
        if brace == "}":
            scopes.pop()
            continue
        if name and OWN not in scopes:
            names.append("::".join(scopes + [name]))
        scopes.append(namespace or name or OWN)
    return names


def check(root):
    """Every type of several definitions as "name: file, file", and how many types there are."""
    places = {}
    for path in sources.source_files(root):
        for name in definitions(path.read_text(encoding="utf-8")):
            places.setdefault(name, []).append(str(path.relative_to(root)))
    problems = [f"{name}: {', '.join(files)}" for name, files in places.items() if len(files) > 1]
    return problems, len(places)


if __name__ == "__main__":
    sources.run(__doc__, check, "types")
