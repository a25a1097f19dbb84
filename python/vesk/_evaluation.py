"""Cross-validation and tuning by the engine, folds spread as tasks."""

from __future__ import annotations

from typing import Any

import numpy as np
from sklearn.model_selection import LeaveOneGroupOut, StratifiedKFold, check_cv

from vesk import _labels, _tasks, _vesk
from vesk._classifier import GestureClassifier


class _FoldTask:
    """The training on one fold's traces and its test on the others."""

    def __init__(self, fold: tuple[Any, Any], how: tuple[Any, ...]) -> None:
        self.fold = fold
        self.how = how

    def run(self, traces: list[Any], labels: Any, groups: Any) -> _vesk.Evaluation:
        users = None if groups is None else _labels.texts(groups)
        return _vesk.evaluate(traces, _labels.texts(labels), users, [self.fold], *self.how)


def _folds(X: list[Any], y: Any, groups: Any, cv: Any) -> list[tuple[Any, Any]]:
    if cv is None:
        cv = StratifiedKFold(5, shuffle=True, random_state=0)
        if groups is not None:
            cv = LeaveOneGroupOut()
    places = np.arange(len(X))
    return list(check_cv(cv, y, classifier=True).split(places, y, groups))


def _evaluated(
    data: tuple[list[Any], Any, Any],
    folds: list[tuple[Any, Any]],
    how: tuple[Any, ...],
    n_jobs: int | None,
) -> _vesk.Evaluation:
    tasks = [
        _tasks.NamedTask(f"evaluate fold {f + 1}", _FoldTask(fold, how))
        for f, fold in enumerate(folds)
    ]
    return _vesk.join_evaluations(_tasks.run(tasks, n_jobs, *data))


def _prepared(
    classifier: GestureClassifier | None, X: Any, y: Any, n_jobs: int | None
) -> tuple[list[Any], Any, dict[str, Any]]:
    traces, labels = _labels.checked(X, y)
    options = (classifier or GestureClassifier()).training_options()
    if _tasks.spreads(n_jobs):
        options["threads"] = 1
    return traces, labels, options


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
    traces, labels, options = _prepared(classifier, X, y, n_jobs)
    folds = _folds(traces, labels, groups, cv)
    how = (options, unknown_gestures, templates)
    return _evaluated((traces, labels, groups), folds, how, n_jobs)


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
    traces, labels, start = _prepared(classifier, X, y, n_jobs)
    folds = _folds(traces, labels, groups, cv)

    def tried(options: dict[str, Any]) -> _vesk.Evaluation:
        how = (options, True, False)
        return _evaluated((traces, labels, groups), folds, how, n_jobs)

    options, trials, evaluation = _vesk.tune(tried, start, false_accept, rounds)
    found = GestureClassifier()
    if classifier is not None:
        found.set_params(**classifier.get_params(deep=False))
    known = found.get_params(deep=False)
    tuned = ("symbols", "states", "delta", "sub_models", "smoothing", "acceptance_ratio")
    found.set_params(**{name: options[name] for name in tuned if name in known})
    return found, trials, evaluation
