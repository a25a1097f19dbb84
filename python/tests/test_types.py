"""The module has what the library has, the type stubs say so, and the package keeps to them."""

import os
import pathlib
import re
import subprocess
import sys

import vesk

CONFIG = pathlib.Path(__file__).parents[1] / "mypy.ini"
SOURCE = pathlib.Path(os.environ["VESK_SOURCE_DIR"])
HEADERS = {
    "HMM": "hmm/HMM.h",
    "KMeansMotionVec": "quantizer/KMeansMotionVec.h",
    "LeftRightHMM": "leftright/LeftRightHMM.h",
    "RecognitionModelHMM": "recognition/RecognitionModelHMM.h",
    "VectorQuantizer2D": "quantizer/VectorQuantizer2D.h",
}


def public_names(name):
    """Fields and operations of a class of the library, from its header."""
    text = (SOURCE / "src/vesk" / HEADERS[name]).read_text(encoding="utf-8")
    body = re.sub(r"//.*", "", text).split(f"class VESK_API {name}", 1)[1].split("\n};")[0]
    body = body.split("public:")[1].split("private:")[0]
    body = re.sub(r"enum \w+ : int \{.*?\};", "", body, flags=re.DOTALL)
    names = set()
    for declaration in re.sub(r"\{[^{}]*\}", ";", body).split(";"):
        found = re.search(r"(~?\w+)\s*\(", declaration) or re.search(r"(\w+)\s*$", declaration)
        if found and "= default" not in declaration:
            names.add(found[1])
    return names - {name, f"~{name}"}


def snake(name):
    """name_in_python of nameInTheLibrary."""
    return re.sub("(?<=[a-z])(?=[A-Z])|(?<=HMM)(?=[a-z])", "_", name).lower()


def listed_as_missing():
    """(class, name) of what docs/python.md says the package does not have by its own name."""
    text = (SOURCE / "docs/python.md").read_text(encoding="utf-8")
    rows = re.findall(r"^\| `(\w+)`: (.+?) \|", text, re.MULTILINE)
    return {(owner, name) for owner, names in rows for name in re.findall(r"`(\w+)`", names)}


def test_has_what_the_library_has_or_the_documentation_says_why_not():
    everything = {(owner, name) for owner in HEADERS for name in public_names(owner)}
    assert {("HMM", "viterbi"), ("HMM", "needsSeed"), ("LeftRightHMM", "delta"),
            ("RecognitionModelHMM", "createRecognitionHMMfromParameters")} <= everything
    missing = {(owner, name) for owner, name in everything
               if not hasattr(getattr(vesk, owner), snake(name))}
    assert missing == listed_as_missing()


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
