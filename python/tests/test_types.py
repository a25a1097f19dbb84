"""The type stubs say what the module has, and the package keeps to them."""

import os
import pathlib
import subprocess
import sys

import vesk

CONFIG = pathlib.Path(__file__).parents[1] / "mypy.ini"


def test_package_is_typed():
    package = pathlib.Path(vesk.__file__).parent
    done = subprocess.run(
        [sys.executable, "-m", "mypy", "--config-file", str(CONFIG), "--cache-dir", os.devnull,
         str(package)],
        capture_output=True, text=True, cwd=package.parent)
    assert done.returncode == 0, done.stdout + done.stderr


def test_stubs_are_those_of_the_module():
    package = pathlib.Path(vesk.__file__).parent
    done = subprocess.run(
        ["/usr/bin/stubtest", "vesk._vesk", "--ignore-missing-stub",
         "--mypy-config-file", str(CONFIG), "--allowlist",
         str(pathlib.Path(__file__).with_name("stubtest_allowed.txt"))],
        capture_output=True, text=True, cwd=package.parent,
        env={**os.environ, "MYPYPATH": str(package.parent)})
    assert done.returncode == 0, done.stdout + done.stderr


def test_everything_has_a_docstring():
    bare = []
    for name in vesk.__all__:
        thing = getattr(vesk, name)
        if not name.startswith("_") and not thing.__doc__:
            bare.append(name)
        if isinstance(thing, type):
            bare += [f"{name}.{m}" for m, v in vars(thing).items()
                     if callable(v) and not m.startswith("_") and not v.__doc__]
    assert bare == []
