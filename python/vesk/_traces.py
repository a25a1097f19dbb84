"""Recorded and synthetic traces as scikit-learn wants them."""

from __future__ import annotations

import os
from typing import Any, NamedTuple

import numpy as np

from vesk import _vesk


class Traces(NamedTuple):
    """Traces, their labels and who drew them, all in one order."""

    X: list[Any]  #: arrays (P, 2)
    y: Any  #: array (n,) of texts, "" where not known
    groups: Any  #: array (n,) of texts, "" where not known


def _traces(lists: tuple[list[Any], list[str], list[str]]) -> Traces:
    points, labels, users = lists
    return Traces(points, np.array(labels, dtype=str), np.array(users, dtype=str))


def read_traces(path: str | os.PathLike[str]) -> Traces:
    """The traces of a file (JSON Lines, CSV, XML gesture log), or of all files of a folder.

    InputError, naming file and line, for what is no trace.
    """
    return _traces(_vesk.read_traces(path))


def generate_traces(
    users: int = 4, repetitions: int = 5, seed: int = 1, unsteadiness: float = 1.0
) -> Traces:
    """Synthetic traces of a dozen gestures; a seed gives the same bits on every machine."""
    return _traces(_vesk.generate_traces(users, repetitions, seed, unsteadiness))
