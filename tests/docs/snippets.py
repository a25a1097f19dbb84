#!/usr/bin/env python3
"""Runs the snippets of the documentation as a reader would, with the installed build.

What stands behind the opening fence says what a block is:

    cpp          a whole program: compiled and run
    cpp FILE     a source: written to that file, for the blocks behind it
    cmake FILE   the same
    sh           a script: run
    sh tree      commands for a checkout: their scripts, options and presets have to exist, but they
                 are not run, since they build all of this
    sh sources   commands for a checkout that build the Python package: run on what it is made of, with
                 the build at hand in place of a new one, where that has the package
    python       a script: run where the build has the Python package
    python cluster
                 what goes on from the traces of "traces.jsonl" with a cluster at tcp://scheduler:8786:
                 run with two workers on this machine, where distributed is installed
    sh cluster   commands for the machines of a cluster, a line a machine, of which all but the last
                 never end: run side by side on this one, where distributed is installed
    sh recorded [cluster]
                 commands for a checkout [and distributed] that take the recorded traces of
                 unistroke16.jsonl: run with the build at hand and those of VESK_DATA_DIR (default:
                 ../shared/data), or with generated ones where there are none
    text         what the block before it printed; "..." stands for anything, on a line of its own for
                 any lines. What generated traces gave in place of recorded ones may differ in figures
    text times   the same, whatever times it took

A block of any other kind is an error. One that needs a package that is not there is left out, with the
text behind it, and counted. Blocks of a document run in their order in one folder, which holds
generated traces in traces.jsonl.

With --update a text without "..." that differs is put into the page: for figures that a change moves.
"""

import argparse
import collections
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile

import checkout
import cluster
import printed
from commands import SHELL, run


def snippets(document):
    text = document.read_text(encoding="utf-8")
    blocks = list(re.finditer(r"^( *)```(.*)\n((?:.*\n)*?)^ *```$", text, re.MULTILINE))
    if len(re.findall("^ *(?:```|~~~)", text, re.MULTILINE)) != 2 * len(blocks):
        sys.exit(f"{document.name}: not all of its fences make blocks of ``` and ```")
    for match in blocks:
        line = text.count("\n", 0, match.start()) + 1
        yield f"{document.name}:{line}", match[2].strip(), match[3]


def compiled(place, code, folder, environment):
    (folder / "snippet.cpp").write_text(code, encoding="utf-8")
    command = ("${CXX:-c++} -std=c++17 snippet.cpp -o snippet $(pkg-config --cflags --libs vesk-kit)"
               " && ./snippet")
    return run(place, ["bash", "-c", command], folder, environment)


def run_script(place, code, folder, environment):
    return run(place, [*SHELL, code], folder, environment)


def run_python(place, code, folder, environment):
    return run(place, ["/usr/bin/python3", "-c", code], folder, environment)


RUNNERS = {"cpp": compiled, "sh": run_script}
PYTHON_RUNNERS = {
    "python": run_python,
    "python cluster": cluster.run_script,
    "sh cluster": cluster.run_machines,
    "sh recorded": checkout.run_on_recordings,
    "sh recorded cluster": checkout.run_on_recordings,
    "sh sources": checkout.run_on_sources,
}


def can_run(kind, environment):
    if kind in PYTHON_RUNNERS and "PYTHONPATH" not in environment:
        return False
    return not kind.endswith("cluster") or cluster.is_installed()


def shown_as(kind, runner_kind):
    """What of a text has to be as it is shown."""
    if "recorded" in runner_kind and not checkout.recorded_traces():
        return printed.without_figures
    return printed.without_times if kind == "text times" else str


def compare(document, place, kind, code, runner_kind, found, update):
    view = shown_as(kind, runner_kind)
    if printed.is_expected(view(found), view(code)):
        return "compared" if view is not printed.without_figures else "compared but for figures"
    if not update or "..." in code or view is printed.without_figures:
        sys.exit(f"{place}: the block before it printed\n{found}expected\n{code}")
    text = document.read_text(encoding="utf-8")
    document.write_text(text.replace(f"\n{code}```", f"\n{found}```", 1), encoding="utf-8")
    return "updated"


def run_document(document, environment, update):
    counts = collections.Counter()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        run(document.name, ["vesk", "generate", "-o", "traces.jsonl", "--users", "2"], folder,
            environment)
        before = found = None
        for place, kind, code in snippets(document):
            language, _, file = kind.partition(" ")
            if kind in ("text", "text times"):
                if before is None:
                    sys.exit(f"{place}: nothing was run before")
                done = "left out" if found is None else compare(
                    document, place, kind, code, before, found, update)
            elif kind == "sh tree":
                checkout.check_tree_commands(place, code)
                done = "looked up"
            elif kind in RUNNERS | PYTHON_RUNNERS:
                before, found, done = kind, None, "left out"
                if can_run(kind, environment):
                    found = (RUNNERS | PYTHON_RUNNERS)[kind](place, code, folder, environment)
                    done = "run"
                    if language != "sh" and not found.strip():
                        sys.exit(f"{place}: says nothing")
            elif language in ("cpp", "cmake") and file:
                (folder / file).write_text(code, encoding="utf-8")
                done = "written"
            else:
                sys.exit(f"{place}: a block of kind {kind!r}, which --help does not know")
            counts[done] += 1
    return counts


def told(counts):
    return ", ".join(f"{count} {what}" for what, count in sorted(counts.items()))


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--update", action="store_true", help="put what was printed into the pages")
    parser.add_argument("documents", nargs="+", type=pathlib.Path, help="pages, or folders of them")
    arguments = parser.parse_args()
    documents = [page for path in arguments.documents
                 for page in (sorted(path.glob("*.md")) if path.is_dir() else [path])]

    # What was started is ended then, too.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("told to end"))
    total = collections.Counter()
    with tempfile.TemporaryDirectory() as prefix:
        subprocess.run(["cmake", "--install", arguments.build, "--prefix", prefix], check=True,
                       stdout=subprocess.DEVNULL)
        libdir = next(pathlib.Path(prefix).rglob("libHMM.so")).parent
        environment = {**os.environ, "PATH": f"{prefix}/bin:{os.environ['PATH']}",
                       "LD_LIBRARY_PATH": str(libdir), "PKG_CONFIG_PATH": f"{libdir}/pkgconfig",
                       "CMAKE_PREFIX_PATH": prefix,
                       "VESK_BUILD_DIR": str(arguments.build.resolve())}
        package = pathlib.Path(prefix, "lib/python3/dist-packages")
        environment.pop("PYTHONPATH", None)
        if package.exists():
            environment["PYTHONPATH"] = str(package)
        for document in documents:
            counts = run_document(document, environment, arguments.update)
            total += counts
            print(f"{document.name}: {told(counts)}", flush=True)
    if not total["run"] and not total["left out"]:
        sys.exit("no snippet found")
    print("in all:", told(total))


if __name__ == "__main__":
    main()
