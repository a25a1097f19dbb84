"""Cross-validation and tuning by the engine, folds spread as tasks."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

import numpy as np
from sklearn.model_selection import LeaveOneGroupOut, StratifiedKFold, check_cv

from vesk import _labels, _tasks, _vesk
from vesk._classifier import GestureClassifier
from vesk._traces import TraceList, Traces


class _FoldTask:
    """The training on one fold's traces and its test on the others."""

    def __init__(self, fold: tuple[Any, Any], how: tuple[Any, ...]) -> None:
        self.fold = fold
        self.how = how

    def run(self, traces: Traces) -> _vesk.Evaluation:
        X, y, users = traces
        return _vesk.evaluate(X, y, users, [self.fold], *self.how)


def _prepared(
    classifier: GestureClassifier | None, X: Any, y: Any, groups: Any, cv: Any, n_jobs: int | None
) -> tuple[Traces, list[tuple[Any, Any]], dict[str, Any]]:
    """What all folds' tasks share, the places of each fold's traces, the options of training."""
    listed, labels = _labels.checked(X, y)
    if cv is None:
        cv = StratifiedKFold(5, shuffle=True, random_state=0)
        if groups is not None:
            cv = LeaveOneGroupOut()
    splitter = check_cv(cv, labels, classifier=True)
    folds = list(splitter.split(np.arange(len(listed)), labels, groups))
    users = None if groups is None else np.array(_labels.texts(groups))
    traces = Traces(TraceList(listed), np.array(_labels.texts(labels)), users)
    options = (classifier or GestureClassifier()).training_options()
    if _tasks.spreads(n_jobs):
        options["threads"] = 1
    return traces, folds, options


def _evaluated(
    run: Callable[[list[_tasks.NamedTask]], Any], folds: list[tuple[Any, Any]], *how: Any
) -> _vesk.Evaluation:
    tasks = [
        _tasks.NamedTask(f"evaluate fold {f + 1}", _FoldTask(fold, how))
        for f, fold in enumerate(folds)
    ]
    return _vesk.join_evaluations(run(tasks))


def evaluate(
    X: Any,
    y: Any,
    groups: Any = None,
    *,
    cv: Any = None,
    classifier: GestureClassifier | None = None,
    unknown_gestures: bool = True,
    templates: bool = True,
    n_jobs: int | None = None,
) -> _vesk.Evaluation:
    """Trains and tests on each fold, beside the template matcher; as `vesk evaluate` does.

    `cv`: a scikit-learn splitter, a number of folds, or None: one user (`groups`) left out in
    turn, or five stratified folds. `unknown_gestures`: each gesture is also taken for unknown in
    turn. A fold is one joblib task. The same at any number of processes.
    """
    traces, folds, options = _prepared(classifier, X, y, groups, cv, n_jobs)
    with _tasks.workers(n_jobs, traces) as run:
        return _evaluated(run, folds, options, unknown_gestures, templates)


def tune(
    X: Any,
    y: Any,
    groups: Any = None,
    *,
    cv: Any = None,
    classifier: GestureClassifier | None = None,
    false_accept: float = 0.02,
    rounds: int = 3,
    n_jobs: int | None = None,
) -> tuple[GestureClassifier, list[tuple[str, float, float, float, bool]], _vesk.Evaluation]:
    """Looks for the options that recognise most while accepting few unknown gestures.

    As `vesk tune`: one option after the other, until a round changes nothing. Folds of a trial are
    joblib tasks. Returns an unfitted classifier with the options found, the trials (change, ratio,
    share correct, share of unknown gestures accepted, whether adopted), and the best one's
    evaluation.
    """
    traces, folds, start = _prepared(classifier, X, y, groups, cv, n_jobs)
    with _tasks.workers(n_jobs, traces) as run:
        options, trials, evaluation = _vesk.tune(
            lambda options: _evaluated(run, folds, options, True, False),
            start,
            false_accept,
            rounds,
        )
    found = GestureClassifier()
    if classifier is not None:
        found.set_params(**classifier.get_params(deep=False))
    known = found.get_params(deep=False)
    tuned = ("symbols", "states", "delta", "sub_models", "smoothing", "acceptance_ratio")
    found.set_params(**{name: options[name] for name in tuned if name in known})
    return found, trials, evaluation
