"""Tasks for joblib: each a value that is sent to where it is run, and its result sent back.

joblib spreads them over whatever its backend is: processes, threads, or a cluster's workers.
Results come back in the order of the tasks. What a task returns depends on nothing but the task, so
one that is run again, after its worker was lost, say, returns the same bits.
"""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

from joblib import Parallel, delayed, effective_n_jobs
from joblib.parallel import get_active_backend


class TaskError(RuntimeError):
    """A task failed; the text names it, a gesture's training for instance."""


class NamedTask:
    """Runs a task. Schedulers show its name, also where a worker dies of it."""

    def __init__(self, name: str, task: Any) -> None:
        self.__name__ = name
        self.task = task

    def __call__(self, *shared: Any) -> Any:
        try:
            return self.task.run(*shared)
        except Exception as problem:
            raise TaskError(f"{self.__name__}: {type(problem).__name__}: {problem}") from problem


def run(tasks: Sequence[NamedTask], n_jobs: int | None, *shared: Any) -> list[Any]:
    """The tasks' results in their order. `shared`: what all of them are called with."""
    calls = (delayed(task)(*shared) for task in tasks)
    return list(Parallel(n_jobs=n_jobs, batch_size=1)(calls))


def spreads(n_jobs: int | None) -> bool:
    """Whether there is more than this process to work."""
    return effective_n_jobs(n_jobs) > 1 or type(get_active_backend()[0]).__name__.startswith(
        "Dask"
    )


def threads(wanted: int | None) -> int:
    """How many threads one process may take: all processors, or one where it is one of many."""
    if wanted is not None:
        return wanted
    nested = getattr(get_active_backend()[0], "nesting_level", 0) or 0
    return 1 if nested > 0 else 0
