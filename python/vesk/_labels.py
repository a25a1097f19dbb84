"""Labels of any kind, and the texts that a model has for them."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

import numpy as np
from sklearn.utils import column_or_1d
from sklearn.utils.multiclass import check_classification_targets

from vesk._traces import TraceList


def texts(y: Any) -> list[str]:
    """Labels as the engine takes them: str of each."""
    return [str(label) for label in y]


def checked(X: Any, y: Any) -> tuple[Sequence[Any], Any]:
    """X as a list of traces and y as an array of as many labels."""
    if y is None:
        raise ValueError(
            "requires y to be passed, but the target y is None: found no labels, expected one a "
            "trace"
        )
    traces = X if isinstance(X, TraceList) else list(X)
    if not traces:
        raise ValueError("X: found no traces, expected at least 1")
    labels = np.asarray(y)
    if labels.ndim == 2 and labels.shape[1] == 1:
        labels = column_or_1d(labels, warn=True)
    if labels.shape != (len(traces),):
        raise ValueError(
            f"y: found labels of shape {labels.shape}, expected ({len(traces)},), one a trace"
        )
    check_classification_targets(labels)
    return traces, labels


def reject_label(wanted: Any, classes: Any) -> Any:
    """The label of rejected traces: `wanted`, where "auto" is "" beside texts and -1 beside numbers.

    None for None: nothing is rejected. ValueError where it is a class.
    """
    if wanted is None:
        return None
    label = wanted
    if isinstance(wanted, str) and wanted == "auto":
        label = "" if classes.dtype.kind in "OSU" else -1
    if any(label == known for known in classes.tolist()):
        raise ValueError(
            f"reject_label: found {label!r}, which is a class, expected another label"
        )
    return label
