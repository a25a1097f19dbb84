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
    text         what the block before it printed; "..." stands for anything, on a line
                 of its own for any lines

    console      what takes other machines or other recordings: not run, for the reasons in
                 docs/testing.md

and other languages (js, html, json) are left to their own tests.

Blocks of a document run in their order in one folder, which holds generated traces in traces.jsonl.
"""

import argparse
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

OTHERS = {"console", "js", "html", "json"}
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


def snippets(document):
    text = document.read_text(encoding="utf-8")
    for match in re.finditer(r"^( *)```(.*)\n((?:.*\n)*?)^ *```$", text, re.MULTILINE):
        line = text.count("\n", 0, match.start()) + 1
        yield f"{document.name}:{line}", match[2].strip(), match[3]


def run(place, command, folder, environment):
    done = subprocess.run(command, cwd=folder, env=environment, text=True, capture_output=True)
    if done.returncode != 0:
        sys.exit(f"{place}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def compiled(place, code, folder, environment):
    pathlib.Path(folder, "snippet.cpp").write_text(code, encoding="utf-8")
    command = ("${CXX:-c++} -std=c++17 snippet.cpp -o snippet $(pkg-config --cflags --libs vesk-kit)"
               " && ./snippet")
    return run(place, ["bash", "-c", command], folder, environment)


def check_tree_commands(place, code):
    """Whether a checkout has what the commands name."""
    presets = {preset["name"] for preset in
               json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}
    for line in code.splitlines():
        for command in line.split("#")[0].split("&&"):
            words = command.split()
            if not words:
                continue
            if words[0] in ("cmake", "ctest"):
                named = [words[i + 1] for i, word in enumerate(words) if word == "--preset"]
                named += [word.removeprefix("build/") for word in words if word.startswith("build/")]
                if not named or not presets.issuperset(named):
                    sys.exit(f"{place}: no such preset: {command}")
                continue
            script = ROOT / words[0]
            if not os.access(script, os.X_OK):
                sys.exit(f"{place}: no such script: {words[0]}")
            text = script.read_text()
            for option in (word for word in words[1:] if word.startswith("-")):
                if option not in text:
                    sys.exit(f"{place}: {words[0]} has no {option}")


def compare(place, found, expected):
    """Fails unless the lines are the expected ones."""
    pattern = ""
    for line in expected.rstrip("\n").split("\n"):
        line = line.rstrip()
        parts = map(re.escape, line.split("..."))
        pattern += "(?:.*\n)*?" if line == "..." else ".*".join(parts) + "\n"
    text = "".join(line.rstrip() + "\n" for line in found.splitlines())
    if not re.fullmatch(pattern, text):
        sys.exit(f"{place}: the block before it printed\n{text}expected\n{expected}")


# `traces`, `vesk` and `model` are the document's names.
CLUSTER = """\
import vesk
from distributed import LocalCluster

traces = vesk.read_traces("traces.jsonl")
with LocalCluster(n_workers=2, threads_per_worker=1, processes=False, protocol="tcp",
                  host="127.0.0.1", dashboard_address=None) as cluster:
    exec({code!r}.replace("{address}", cluster.scheduler_address))
print(model.score(traces.X, traces.y))
"""


def run_on_cluster(place, code, folder, environment):
    address = "tcp://scheduler:8786"
    if address not in code:
        sys.exit(f"{place}: found no cluster at {address}")
    script = CLUSTER.format(code=code, address=address)
    printed = run(place, ["/usr/bin/python3", "-c", script], folder,
                  {**environment, "no_proxy": "127.0.0.1"})
    if not float(printed) > 0.9:
        sys.exit(f"{place}: the model of the cluster is right about {printed}")
    return printed


def run_on_sources(place, code, build, environment):
    with tempfile.TemporaryDirectory() as folder:
        for name in ("CMakeLists.txt", "README.md", "pyproject.toml", "setup.py"):
            shutil.copy(ROOT / name, folder)
        shutil.copytree(ROOT / "python/vesk", pathlib.Path(folder, "python/vesk"))
        own = {name: value for name, value in environment.items() if name != "PYTHONPATH"}
        own.update(VESK_BUILD_DIR=str(build.resolve()), PATH=f"/usr/bin:{own['PATH']}")
        own.pop("LD_LIBRARY_PATH")
        return run(place, ["bash", "-euo", "pipefail", "-c", code], folder, own)


def has_distributed():
    return subprocess.run(["/usr/bin/python3", "-c", "import distributed"],
                          stderr=subprocess.DEVNULL).returncode == 0


def run_document(document, build, environment):
    counts = dict.fromkeys(["run", "written", "compared", "looked up", "left to others"], 0)
    with tempfile.TemporaryDirectory() as folder:
        run(document.name, ["vesk", "generate", "-o", "traces.jsonl", "--users", "2"], folder,
            environment)
        printed = None
        for place, kind, code in snippets(document):
            language, _, name = kind.partition(" ")
            if kind == "text":
                if printed is None:
                    sys.exit(f"{place}: nothing was run before")
                compare(place, printed, code)
                counts["compared"] += 1
            elif kind == "sh tree":
                check_tree_commands(place, code)
                counts["looked up"] += 1
            elif kind in ("sh", "cpp"):
                printed = (compiled(place, code, folder, environment) if kind == "cpp" else
                           run(place, ["bash", "-euo", "pipefail", "-c", code], folder, environment))
                if not printed.strip() and kind == "cpp":
                    sys.exit(f"{place}: says nothing")
                counts["run"] += 1
            elif kind == "python" and "PYTHONPATH" in environment:
                printed = run(place, ["/usr/bin/python3", "-c", code], folder, environment)
                if not printed.strip():
                    sys.exit(f"{place}: says nothing")
                counts["run"] += 1
            elif kind == "python cluster" and "PYTHONPATH" in environment and has_distributed():
                printed = run_on_cluster(place, code, folder, environment)
                counts["run"] += 1
            elif kind == "sh sources" and "PYTHONPATH" in environment:
                printed = run_on_sources(place, code, build, environment)
                counts["run"] += 1
            elif language in ("cpp", "cmake") and name:
                pathlib.Path(folder, name).write_text(code, encoding="utf-8")
                counts["written"] += 1
            elif language in OTHERS or kind in ("python", "python cluster", "sh sources"):
                counts["left to others"] += 1
            else:
                sys.exit(f"{place}: a block of kind {kind!r}, expected cpp, cmake FILE, sh or text")
    return counts


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("documents", nargs="+", type=pathlib.Path, help="pages, or folders of them")
    arguments = parser.parse_args()
    documents = [page for path in arguments.documents
                 for page in (sorted(path.glob("*.md")) if path.is_dir() else [path])]

    total = {}
    with tempfile.TemporaryDirectory() as prefix:
        subprocess.run(["cmake", "--install", arguments.build, "--prefix", prefix], check=True,
                       stdout=subprocess.DEVNULL)
        libdir = next(pathlib.Path(prefix).rglob("libHMM.so")).parent
        environment = {**os.environ, "PATH": f"{prefix}/bin:{os.environ['PATH']}",
                       "LD_LIBRARY_PATH": str(libdir), "PKG_CONFIG_PATH": f"{libdir}/pkgconfig",
                       "CMAKE_PREFIX_PATH": prefix}
        package = pathlib.Path(prefix, "lib/python3/dist-packages")
        environment.pop("PYTHONPATH", None)
        if package.exists():
            environment["PYTHONPATH"] = str(package)
        for document in documents:
            counts = run_document(document, arguments.build, environment)
            for key, count in counts.items():
                total[key] = total.get(key, 0) + count
            print(f"{document.name}: " +
                  ", ".join(f"{count} {key}" for key, count in counts.items() if count))
    if not total["run"]:
        sys.exit("no snippet found")
    print("in all: " + ", ".join(f"{count} {key}" for key, count in total.items()))


if __name__ == "__main__":
    main()
