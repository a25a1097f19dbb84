"""Tasks for joblib: each a value that is sent to where it is run, and its result sent back.

joblib spreads them over whatever its backend is: processes, threads, or a cluster's workers.
Results come back in the order of the tasks. What a task returns depends on nothing but the task, so
one that is run again, after its worker was lost, say, returns the same bits.
"""

from __future__ import annotations

import sys
from collections.abc import Callable, Iterator, Sequence
from contextlib import ExitStack, contextmanager
from typing import Any

from joblib import Parallel, delayed, effective_n_jobs, parallel_backend
from joblib.parallel import get_active_backend

SENT_ALONG = 10_000  # bytes of an array that a file of its own is not worth


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


@contextmanager
def workers(n_jobs: int | None, *shared: Any) -> Iterator[Callable[[Sequence[NamedTask]], Any]]:
    """What runs tasks and returns their results in order. All are called with what is `shared`.

    That is handed over once for all of them: processes map its arrays from a file of joblib's; on a
    cluster each worker gets it before the first task, so that none is the only one to have it.
    """
    with ExitStack() as stack:
        backend = get_active_backend()[0]
        if not spreads(n_jobs):
            stack.enter_context(parallel_backend("sequential"))
        elif shared and _is_cluster(backend):
            stack.enter_context(
                parallel_backend(
                    "dask", client=backend.client, scatter=shared, **backend.submit_kwargs
                )
            )
        parallel = stack.enter_context(Parallel(n_jobs, batch_size=1, max_nbytes=SENT_ALONG))
        yield lambda tasks: parallel(delayed(task)(*shared) for task in tasks)


def spreads(n_jobs: int | None) -> bool:
    """Whether there is more than this process to work.

    What is one of a cluster's tasks itself, a candidate of a grid for instance, stays in one piece
    unless it has an `n_jobs` above 1: its traces would travel again.
    """
    if _is_cluster(get_active_backend()[0]):
        return not _is_task_of_cluster() or n_jobs not in (None, 1)
    return bool(effective_n_jobs(n_jobs) > 1)


def threads(wanted: int | None) -> int:
    """How many threads one process may take: all processors, or one where it is one of many."""
    if wanted is not None:
        return wanted
    backend = get_active_backend()[0]
    nested = (getattr(backend, "nesting_level", 0) or 0) > 0
    return 1 if nested or (_is_cluster(backend) and _is_task_of_cluster()) else 0


def _is_cluster(backend: Any) -> bool:
    return type(backend).__name__.startswith("Dask")


def _is_task_of_cluster() -> bool:
    return hasattr(sys.modules["distributed.utils"].thread_state, "execution_state")
