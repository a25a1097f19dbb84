#!/usr/bin/env python3
"""Checks that dependencies under src/, tools/ and python/ only point down.

usage: includes.py ROOT

Reads every #include of ROOT/src, ROOT/tools and ROOT/python/src. The layers, bottom first: a file may include from
its own layer and from those that its layer names here, and nothing else of the project.
"""

import pathlib
import re

import sources

LAYERS = {
    "vesk/base": [],
    "vesk/math": [],
    "vesk/kernels": [],
    "vesk/hmm": ["vesk/base", "vesk/math", "vesk/kernels"],
    "vesk/leftright": ["vesk/base", "vesk/math", "vesk/kernels", "vesk/hmm"],
    "vesk/recognition": ["vesk/base", "vesk/math", "vesk/kernels", "vesk/hmm", "vesk/leftright"],
    "vesk/quantizer": ["vesk/base"],
    "veskcore": [],
    "veskkit": ["vesk/math", "vesk/hmm", "vesk/leftright", "vesk/recognition", "vesk/quantizer"],
    "tools": ["vesk/math", "vesk/hmm", "vesk/leftright", "vesk/recognition", "vesk/quantizer",
              "veskkit"],
    "python": ["vesk/math", "vesk/hmm", "vesk/leftright", "vesk/recognition", "vesk/quantizer",
               "veskkit"],
}

# Headers of no layer, and the one header that the companion clusterer takes from above it.
FOR_ALL = {"vesk/Export.h", "vesk/Version.h"}
EXCEPTIONS = {"veskcore": {"vesk/quantizer/KMeansMotionVec.h"}}

# Within the kit only the folders that read and write foreign formats need more than the language.
THIRD_PARTY = {
    re.compile(r"(nlohmann/|fmt/|CLI/|pugixml\.hpp)"): ("veskkit/io/", "veskkit/report/", "tools/"),
    re.compile(r"pybind11/"): ("python/",),
}

STANDARD = set("""
    algorithm any array atomic bit bitset charconv chrono cmath compare complex concepts cassert
    cerrno cfenv cfloat cinttypes climits clocale csignal cstdarg cstddef cstdint cstdio cstdlib
    cstring ctime cwchar deque exception filesystem forward_list fstream functional future
    initializer_list iomanip ios iosfwd iostream istream iterator limits list locale map memory
    mutex new numbers numeric optional ostream queue random ratio regex set shared_mutex span
    sstream stack stdexcept streambuf string string_view system_error thread tuple type_traits
    typeindex typeinfo unordered_map unordered_set utility valarray variant vector
    condition_variable cxxabi.h
    """.split())
# The two shared objects need nothing but the language and the processor; what lies above them may
# ask the operating system.
PROCESSOR = {"immintrin.h"}
SYSTEM = re.compile(r"(sys/\w+|dirent|fcntl|unistd|signal|poll)\.h")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def layer_of(path):
    """The layer of a file given as it is included; None for a header of no layer."""
    for layer in LAYERS:
        if path.startswith(layer + "/"):
            return layer
    return None


def spelled(root, source, quote, included):
    """The path of an include from its include root; a quoted one may be relative to the file."""
    if quote == '"':
        beside = source.parent / included
        if beside.is_file():
            return inside(root, beside.resolve())
    return included


def inside(root, path):
    relative = path.relative_to(root)
    return str(relative.relative_to("src")) if relative.parts[0] == "src" else str(relative)


def problem(includer, included):
    """Why the file `includer` may not include `included`; None where it may."""
    layer = layer_of(includer)
    if layer is None:
        return None if includer in FOR_ALL else "the file lies in no layer"
    internal = "internal" in pathlib.PurePosixPath(included).parts
    if internal and includer.endswith(".h") and "internal" not in includer.split("/"):
        return "a public header includes an internal one"

    if included.startswith(("vesk/", "veskcore/", "veskkit/", "tools/", "python/")):
        if included in FOR_ALL or included in EXCEPTIONS.get(layer, ()):
            return None
        target = layer_of(included)
        if target is None:
            return "the included file lies in no layer"
        if target != layer and target not in LAYERS[layer]:
            return f"{layer} may not depend on {target}"
        if internal and target.split("/")[0] != layer.split("/")[0]:
            return f"{target} keeps its internal headers to itself"
        return None

    for library, allowed in THIRD_PARTY.items():
        if library.match(included):
            return None if includer.startswith(allowed) else "only " + ", ".join(allowed) + " may"
    if included in STANDARD or included in PROCESSOR:
        return None
    if SYSTEM.fullmatch(included) and not includer.startswith(("vesk/", "veskcore/")):
        return None
    if layer == "tools" and "/" not in included:
        return None
    return "not a header that this project builds on"


def check(root):
    """Every problem under root as "file: <include>: why", and how many includes were read."""
    problems = []
    count = 0
    for path in sources.source_files(root):
        includer = inside(root, path)
        for quote, included in INCLUDE.findall(path.read_text(encoding="utf-8")):
            count += 1
            why = problem(includer, spelled(root, path, quote, included))
            if why:
                problems.append(f"{path.relative_to(root)}: <{included}>: {why}")
    return problems, count


if __name__ == "__main__":
    sources.run(__doc__, check, "includes")
