"""The package as pip makes and installs it, without an index."""

import os
import pathlib
import shutil
import subprocess
import sys


def test_pip_installs_what_works_by_itself(tmp_path):
    source = pathlib.Path(os.environ["VESK_SOURCE_DIR"])
    # A copy, since pip leaves things beside what it builds.
    for name in ("CMakeLists.txt", "README.md", "pyproject.toml", "setup.py"):
        shutil.copy(source / name, tmp_path / name)
    shutil.copytree(source / "python" / "vesk", tmp_path / "python" / "vesk")
    target = tmp_path / "installed"
    done = subprocess.run(
        [sys.executable, "-m", "pip", "install", "--quiet", "--no-build-isolation", "--no-deps",
         "--no-index", "--target", target, "."],
        cwd=tmp_path, capture_output=True, text=True, env={**os.environ, "PYTHONPATH": ""})
    assert done.returncode == 0, done.stdout + done.stderr
    names = sorted(p.name for p in (target / "vesk").iterdir() if p.name != "__pycache__")
    assert [n for n in names if ".so" in n] == [
        f"_vesk.cpython-{sys.version_info.major}{sys.version_info.minor}-{os.uname().machine}-linux-gnu.so",
        "libHMM.so.1", "libVeskcore.so.1"]
    assert {"__init__.py", "_vesk.pyi", "py.typed"} <= set(names)
    script = ("import vesk; t = vesk.generate_traces(2, 2); m = vesk.GestureClassifier("
              "calibrate=False, discrimination=0).fit(t.X, t.y); print(vesk.__file__, "
              "m.score(t.X, t.y) > 0.9)\n"
              "print([l.split()[-1] for l in open('/proc/self/maps') if 'libHMM' in l][0])")
    done = subprocess.run(
        [sys.executable, "-c", script], capture_output=True, text=True,
        env={**os.environ, "PYTHONPATH": str(target), "LD_LIBRARY_PATH": ""})
    assert done.returncode == 0, done.stderr
    first, second = done.stdout.splitlines()
    assert first == f"{target}/vesk/__init__.py True"
    assert second.startswith(str(target))
