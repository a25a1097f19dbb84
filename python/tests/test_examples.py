"""The examples run as they stand."""

import os
import pathlib
import subprocess
import sys

EXAMPLES = pathlib.Path(__file__).parents[1] / "examples"


def output(folder, name, *arguments):
    done = subprocess.run(
        [sys.executable, EXAMPLES / name, *arguments], cwd=folder, capture_output=True, text=True,
        env={**os.environ, "DASK_TEMPORARY_DIRECTORY": str(folder), "no_proxy": "127.0.0.1"})
    assert done.returncode == 0, done.stderr
    return done.stdout


def test_ten_lines(tmp_path):
    assert float(output(tmp_path, "ten_lines.py").split()[-1]) > 0.9
    assert (tmp_path / "gestures.model").exists()


def test_study(tmp_path):
    lines = output(tmp_path, "study.py").splitlines()
    assert len(lines) == 1 + 4 + 1
    assert float(lines[-1].split()[2]) > 90


def test_cluster(tmp_path):
    assert output(tmp_path, "cluster.py").endswith("equal: True\n")
