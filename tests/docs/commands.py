"""Commands of the snippets, and what they leave behind."""

import contextlib
import os
import signal
import subprocess
import sys
import time

SHELL = ["bash", "-euo", "pipefail", "-c"]


def with_debians_python(environment):
    """The one that the package is for. Loopback needs none of the shell's proxies."""
    return {**environment, "PATH": f"/usr/bin:{environment['PATH']}", "no_proxy": "127.0.0.1",
            "PYTHONDONTWRITEBYTECODE": "1"}


def run(place, command, folder, environment):
    """What a command prints, which has to succeed."""
    done = subprocess.run(command, cwd=folder, env=environment, text=True, capture_output=True)
    if done.returncode != 0:
        sys.exit(f"{place}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


@contextlib.contextmanager
def started(command, folder, environment, **streams):
    """A process that ends with the block, with all that it started, or else with this program."""
    process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command], cwd=folder,
                               env=environment, start_new_session=True, **streams)
    try:
        yield process
    finally:
        for number in (signal.SIGTERM, signal.SIGKILL):
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, number)
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(10)


def run_beside(place, servers, command, folder, environment, limit=300):
    """What a command prints while none of the servers (processes by their logs) ends."""
    printed, complaints = folder / "printed", folder / "complaints"
    with printed.open("w") as out, complaints.open("w") as err, \
            started(command, folder, environment, stdout=out, stderr=err) as process:
        end = time.monotonic() + limit
        while process.poll() is None:
            for log, server in servers.items():
                if server.poll() is not None:
                    sys.exit(f"{place}: {server.args} ended\n{log.read_text()}")
            if time.monotonic() > end:
                sys.exit(f"{place}: still runs after {limit} s\n{complaints.read_text()}")
            time.sleep(0.05)
    if process.returncode != 0:
        sys.exit(f"{place}: status {process.returncode}\n{printed.read_text()}"
                 f"{complaints.read_text()}")
    return printed.read_text()
