"""What the tests share: traces, recorded or drawn, and the program to compare with."""

import os
import pathlib
import subprocess

import numpy as np
import pytest

import vesk


@pytest.fixture(scope="session")
def drawn():
    """Three users' traces of a dozen gestures."""
    return vesk.generate_traces(users=3, repetitions=4, seed=7)


@pytest.fixture(scope="session")
def few(drawn):
    """Traces of three gestures only."""
    chosen = np.isin(drawn.y, ["circle", "star", "triangle"])
    return vesk.Traces(*(part[chosen] for part in drawn))


@pytest.fixture(scope="session")
def fitted(drawn):
    return vesk.GestureClassifier(calibrate=False).fit(drawn.X, drawn.y, groups=drawn.groups)


@pytest.fixture(scope="session")
def program():
    """Runs the program `vesk` and returns what it wrote to standard output."""
    path = os.environ.get("VESK_PROGRAM")
    if not path:
        pytest.skip("the program vesk was not built")

    def run(*arguments):
        done = subprocess.run([path, *map(str, arguments)], capture_output=True, text=True)
        assert done.returncode == 0, done.stderr
        return done.stdout

    return run


@pytest.fixture(scope="session")
def recorded():
    """The folder of recorded traces; tests that need them are skipped without."""
    beside = pathlib.Path(os.environ.get("VESK_SOURCE_DIR", "."), "..", "shared", "data")
    folder = os.environ.get("VESK_DATA_DIR") or beside
    if not pathlib.Path(folder, "unistroke16.jsonl").exists():
        pytest.skip("no recorded traces (VESK_DATA_DIR)")
    return pathlib.Path(folder)
