"""Loaded by workers under test: makes tasks slow, or ends the worker at one."""

import os
import time

from vesk import _tasks

DELAY = float(os.environ["VESK_TEST_DELAY"])
DIES_OF = os.environ["VESK_TEST_DIES_OF"]
ordinary = _tasks.NamedTask.__call__


def faulty(self, *shared):
    time.sleep(DELAY)
    if DIES_OF and self.__name__.endswith(DIES_OF):
        os._exit(1)
    return ordinary(self, *shared)


_tasks.NamedTask.__call__ = faulty
