"""Traces as scikit-learn wants them: a list of arrays, which is also cheap to send."""

from __future__ import annotations

import os
from collections.abc import Iterable, Sequence
from typing import Any, NamedTuple

import numpy as np

from vesk import _vesk


class TraceList(Sequence[Any]):
    """Traces, arrays (P, 2), that cannot be changed; all positions lie in one array.

    It is sent to another process as that one array. joblib and Dask know such an array again, and
    hand it over once, however many tasks work on it. Indexed by a number it gives a trace; by a
    slice, numbers or a mask, a TraceList.
    """

    def __init__(self, X: Iterable[Any]) -> None:
        if isinstance(X, TraceList):
            self._hold(X._points, X._lengths)
        else:
            self._hold(*_vesk.pack_traces(X))

    @classmethod
    def _of_arrays(cls, points: Any, lengths: Any) -> TraceList:
        traces = cls.__new__(cls)
        traces._hold(points, lengths)
        return traces

    def _hold(self, points: Any, lengths: Any) -> None:
        """`points`: (P, 2), of all traces, one after another; `lengths`: (n,), how many each has."""
        points.flags.writeable = False
        self._points = points
        self._lengths = lengths
        self._ends = np.cumsum(lengths)

    def __len__(self) -> int:
        return len(self._lengths)

    def __getitem__(self, place: Any) -> Any:
        if isinstance(place, (slice, list, np.ndarray)):
            return TraceList([self[i] for i in np.arange(len(self))[place]])
        end = self._ends[place]
        return self._points[end - self._lengths[place] : end]

    def __add__(self, others: Iterable[Any]) -> TraceList:
        return TraceList([*self, *others])

    def __radd__(self, others: Iterable[Any]) -> TraceList:
        return TraceList([*others, *self])

    def __sizeof__(self) -> int:
        """Bytes, of the traces too: Dask hands over once what is large."""
        return int(self._points.nbytes + self._lengths.nbytes + self._ends.nbytes)

    def __reduce__(self) -> tuple[Any, ...]:
        return TraceList._of_arrays, (self._points, self._lengths)

    def __repr__(self) -> str:
        return f"<TraceList: {len(self)} traces, {len(self._points)} positions>"


class Traces(NamedTuple):
    """Traces, their labels and who drew them, all in one order."""

    X: TraceList  #: arrays (P, 2)
    y: Any  #: array (n,) of texts, "" where not known
    groups: Any  #: array (n,) of texts, "" where not known


def _traces(points: Any, lengths: Any, labels: list[str], users: list[str]) -> Traces:
    return Traces(
        TraceList._of_arrays(points, lengths), np.array(labels, dtype=str), np.array(users, dtype=str)
    )


def read_traces(path: str | os.PathLike[str]) -> Traces:
    """The traces of a file (JSON Lines, CSV, XML gesture log), or of all files of a folder.

    InputError, naming file and line, for what is no trace.
    """
    return _traces(*_vesk.read_traces(path))


def generate_traces(
    users: int = 4, repetitions: int = 5, seed: int = 1, unsteadiness: float = 1.0
) -> Traces:
    """Synthetic traces of a dozen gestures; a seed gives the same bits on every machine."""
    return _traces(*_vesk.generate_traces(users, repetitions, seed, unsteadiness))
