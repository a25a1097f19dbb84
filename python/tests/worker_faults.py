"""Loaded by workers under test: makes tasks slow, ends the worker at one, counts what it is sent."""

import os
import time

import traffic

from vesk import _tasks

DELAY = float(os.environ["VESK_TEST_DELAY"])
DIES_OF = os.environ["VESK_TEST_DIES_OF"]
# A worker may load this more than once.
ordinary = getattr(_tasks.NamedTask.__call__, "ordinary", _tasks.NamedTask.__call__)


def faulty(self, *shared):
    time.sleep(DELAY)
    if DIES_OF and self.__name__.endswith(DIES_OF):
        os._exit(1)
    return ordinary(self, *shared)


faulty.ordinary = ordinary
_tasks.NamedTask.__call__ = faulty
