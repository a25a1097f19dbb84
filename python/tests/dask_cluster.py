"""A scheduler and workers, processes of their own that talk TCP on loopback."""

import contextlib
import ctypes
import os
import pathlib
import signal
import subprocess
import sys
import time

from distributed import Client

HERE = pathlib.Path(__file__).parent


def die_with_parent():
    """Nothing is left behind by tests that are killed themselves."""
    parent_death_signal = 1
    ctypes.CDLL(None).prctl(parent_death_signal, signal.SIGKILL)


def started(module, *arguments, **environment):
    # Without the shell's proxies, which are not for loopback.
    env = {**os.environ, "no_proxy": "127.0.0.1", **environment}
    return subprocess.Popen(
        [sys.executable, "-m", f"distributed.cli.{module}", *map(str, arguments)],
        env=env, preexec_fn=die_with_parent, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)


def address_of(scheduler):
    for line in scheduler.stderr:
        if "Scheduler at:" in line:
            return line.split("Scheduler at:")[1].strip()
    raise RuntimeError("the scheduler did not start")


class Cluster:
    """`workers` of one thread each, without nannies: one that is killed stays so.

    `delays`: seconds that each worker sleeps before a task of vesk; `dies_of`: the task that ends
    the worker.
    """

    def __init__(self, folder, delays, dies_of="", allowed_failures=3):
        self.running = contextlib.ExitStack()
        try:
            scheduler = self._start(
                "dask_scheduler", "--host", "127.0.0.1", "--port", 0, "--no-dashboard",
                DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES=str(allowed_failures))
            address = address_of(scheduler)
            self.workers = [
                self._start(
                    "dask_worker", address, "--no-nanny", "--nthreads", 1, "--host", "127.0.0.1",
                    "--no-dashboard", "--name", f"w{i}", "--local-directory", folder,
                    "--preload", HERE / "worker_faults.py",
                    VESK_TEST_DELAY=str(delay), VESK_TEST_DIES_OF=dies_of)
                for i, delay in enumerate(delays)
            ]
            self.client = self.running.enter_context(Client(address, timeout=30))
            self.client.wait_for_workers(len(delays), timeout=60)
        except BaseException:
            self.running.close()
            raise

    def _start(self, *arguments, **environment):
        process = started(*arguments, **environment)
        self.running.callback(process.stderr.close)
        self.running.callback(process.wait)
        self.running.callback(process.kill)
        return process

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.running.close()

    def kill_one_at_work(self, what, log, over):
        """Kills a worker in the middle of a task whose name has `what`, once two others are done."""
        seen = set()
        while not over.is_set():
            working = {
                address: {str(key) for key in keys if what in str(key)}
                for address, keys in self.client.processing().items()
            }
            now = set().union(*working.values())
            seen |= now
            busy = [address for address, keys in working.items() if keys]
            if busy and len(seen - now) >= 2:
                name = self.client.scheduler_info()["workers"][busy[0]]["name"]
                self.workers[int(name[1:])].kill()
                log(f"killed {name} in {min(working[busy[0]])[:60]}; {len(seen - now)} tasks done")
                return
            time.sleep(0.01)
