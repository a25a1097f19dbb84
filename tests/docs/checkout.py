"""Snippets for a checkout."""

import json
import os
import pathlib
import shutil
import sys
import tempfile

from commands import SHELL, run, run_beside, with_debians_python

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


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


def run_on_sources(place, code, _, environment):
    """Builds the package from copies, with what is built already."""
    with tempfile.TemporaryDirectory() as folder:
        for name in ("CMakeLists.txt", "README.md", "pyproject.toml", "setup.py"):
            shutil.copy(ROOT / name, folder)
        shutil.copytree(ROOT / "python/vesk", pathlib.Path(folder, "python/vesk"))
        own = with_debians_python(environment)
        del own["PYTHONPATH"], own["LD_LIBRARY_PATH"]
        return run(place, [*SHELL, code], folder, own)


def recorded_traces():
    """The file, or None."""
    folder = pathlib.Path(os.environ.get("VESK_DATA_DIR") or ROOT.parent / "shared/data")
    file = folder.resolve() / "unistroke16.jsonl"
    return file if file.exists() else None


def link(name, target):
    name.parent.mkdir(exist_ok=True)
    if not name.exists():
        name.symlink_to(target)


def link_into(folder, environment):
    """Lets a folder have a checkout's scripts for Python, and its build."""
    link(folder / "python", ROOT / "python")
    link(folder / "build/release", environment["VESK_BUILD_DIR"])


def run_on_recordings(place, code, folder, environment):
    """In a folder that looks like a checkout, with the traces."""
    link_into(folder, environment)
    traces = folder / "unistroke16.jsonl"
    if recorded_traces():
        link(traces, recorded_traces())
    else:
        # Recorded users' names begin with another letter.
        drawn = run(place, ["vesk", "generate", "-q", "-o", "-", "--repetitions", "4"], folder,
                    environment)
        traces.write_text(drawn.replace('"user":"u', '"user":"s'), encoding="utf-8")
    return run_beside(place, {}, [*SHELL, code], folder, with_debians_python(environment))
