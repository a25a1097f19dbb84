"""Snippets for a cluster, run on one machine."""

import contextlib
import shlex
import subprocess
import sys
import time

from checkout import link_into
from commands import run, run_beside, started, with_debians_python

ADDRESS = "tcp://scheduler:8786"

# `traces`, `vesk` and `model` are the document's names.
SCRIPT = """\
import vesk
from distributed import LocalCluster

traces = vesk.read_traces("traces.jsonl")
with LocalCluster(n_workers=2, threads_per_worker=1, processes=False, protocol="tcp",
                  host="127.0.0.1", dashboard_address=None) as cluster:
    exec({code!r}.replace("{address}", cluster.scheduler_address))
print(model.score(traces.X, traces.y))
"""


def is_installed():
    return subprocess.run(["/usr/bin/python3", "-c", "import distributed"],
                          stderr=subprocess.DEVNULL).returncode == 0


def run_script(place, code, folder, environment):
    """A script, with two workers in one process."""
    if ADDRESS not in code:
        sys.exit(f"{place}: found no cluster at {ADDRESS}")
    printed = run(place, ["/usr/bin/python3", "-c", SCRIPT.format(code=code, address=ADDRESS)],
                  folder, with_debians_python(environment))
    if not float(printed) > 0.9:
        sys.exit(f"{place}: the model of the cluster is right about {printed}")
    return printed


def address_in(place, log, scheduler):
    for _ in range(600):
        text = log.read_text()
        for line in text.splitlines():
            if "Scheduler at:" in line:
                return line.split("Scheduler at:")[1].strip()
        if scheduler.poll() is not None:
            break
        time.sleep(0.05)
    sys.exit(f"{place}: no scheduler came up\n{text}")


def run_machines(place, code, folder, environment):
    """A line for the scheduler's machine, one for each worker's, and one that makes use of them.

    All of them are processes of this machine that talk on loopback, at a port that is free."""
    scheduler, *workers, asking = (shlex.split(line, comments=True) for line in code.splitlines())
    if not all(ADDRESS in command for command in (*workers, asking)):
        sys.exit(f"{place}: not all of its commands are told of {ADDRESS}")
    link_into(folder, environment)
    environment = with_debians_python(environment)
    with contextlib.ExitStack() as running:
        servers = {}

        def start(command, *more):
            log = folder / f"server{len(servers)}.log"
            servers[log] = running.enter_context(started(
                [*command, "--host", "127.0.0.1", "--no-dashboard", *more], folder, environment,
                stdout=running.enter_context(log.open("w")), stderr=subprocess.STDOUT))
            return log, servers[log]

        address = address_in(place, *start(scheduler, "--port", "0"))
        here = {ADDRESS: address}
        for command in workers:
            start([here.get(word, word) for word in command])
        return run_beside(place, servers, [here.get(word, word) for word in asking], folder,
                          environment)
