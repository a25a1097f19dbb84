"""The gesture recogniser as a scikit-learn estimator."""

from __future__ import annotations

import os
import warnings
from collections.abc import Sequence
from typing import Any

import numpy as np
from sklearn.base import BaseEstimator, ClassifierMixin
from sklearn.utils.validation import check_is_fitted

from vesk import _labels, _tasks, _vesk

_ELSEWHERE = ("n_jobs", "reject_label", "threads")


class GestureClassifier(ClassifierMixin, BaseEstimator):  # type: ignore[misc]
    """Recognises gestures in traces, or rejects them, with hidden Markov models.

    X is a list of traces, arrays (P, 2) of x and y in any unit, in the order of time; traces may
    differ in length. Labels may be texts or numbers. Training is deterministic: the same traces in
    the same order give the same model, to the bit, at any number of threads, processes and
    machines.

    Parameters
    ----------
    symbols : directions that are told apart, 2 to 360.
    codebook : those directions in degrees, (symbols,); None: evenly spaced.
    states : of a gesture's model, 2 to 200.
    delta : largest forward jump between states.
    sub_models : most models a gesture, one a way of drawing it, 1 to 16. None: 1 below 20 traces
        of the gesture, else 6.
    smallest_sub_model : traces that a sub-model is made from at least.
    first_estimate : "even_cut" or "equal_segments".
    iterations : most training iterations a model.
    emission_floor : least emission before a row is normalised.
    smoothing : degrees that emissions are smoothed over. None: 22, or 28 for few traces.
    discrimination : rounds in which models learn to tell each other's traces apart.
    turns : copies of the models of gestures with 20 traces or more, turned by 22.5 degrees and
        more, to either side. None: 2 where users can be left out (`groups` of `fit`), unless
        clearly fewer of their traces are told right so; else 0.
    threshold_states, threshold_smoothing : of the threshold model.
    acceptance_ratio : how much likelier than the threshold model a gesture has to be. None:
        calibrated where `calibrate`, by leaving out users (`groups` of `fit`) or traces.
    calibrate : whether an unset ratio is calibrated, and, with users, how much more gestures of
        many traces are asked for.
    false_rejection : share of right answers that calibration gives up.
    points : positions that traces are resampled to; 0 leaves them as drawn.
    flip_y : whether y is negated.
    bearings : steps behind the path's that tell where its positions lie, seen from their mean.
    skip_bad : leave out traces without a direction in training rather than refuse them.
    name : of the model in a file, one word.
    reject_label : what `predict` answers for a rejected trace. "auto": "" among texts, -1 among
        numbers. None: nothing is rejected, the likeliest gesture is the answer.
    n_jobs : joblib's. Above 1, or with a cluster's backend, training is spread in tasks: one a
        gesture, then one a calibration run.
    threads : that a single process takes; None: one for each processor, one inside of a worker.

    Attributes
    ----------
    classes_ : (K,) labels, sorted.
    recognizer_ : Recognizer, the engine with the model.
    report_ : dict of how the training went; empty for a model that was loaded.
    reject_label_ : the label of rejected traces.
    """

    def __init__(
        self,
        *,
        symbols: int = 32,
        codebook: Any = None,
        states: int = 40,
        delta: int = 1,
        sub_models: int | None = None,
        smallest_sub_model: int = 5,
        first_estimate: str = "even_cut",
        iterations: int = 3,
        emission_floor: float = 1e-3,
        smoothing: float | None = None,
        discrimination: int = 24,
        turns: int | None = None,
        threshold_states: int = 4,
        threshold_smoothing: float = 30.0,
        acceptance_ratio: float | None = None,
        calibrate: bool = True,
        false_rejection: float = 0.02,
        points: int = 41,
        flip_y: bool = False,
        bearings: int = 8,
        skip_bad: bool = False,
        name: str = "gestures",
        reject_label: Any = "auto",
        n_jobs: int | None = None,
        threads: int | None = None,
    ) -> None:
        self.symbols = symbols
        self.codebook = codebook
        self.states = states
        self.delta = delta
        self.sub_models = sub_models
        self.smallest_sub_model = smallest_sub_model
        self.first_estimate = first_estimate
        self.iterations = iterations
        self.emission_floor = emission_floor
        self.smoothing = smoothing
        self.discrimination = discrimination
        self.turns = turns
        self.threshold_states = threshold_states
        self.threshold_smoothing = threshold_smoothing
        self.acceptance_ratio = acceptance_ratio
        self.calibrate = calibrate
        self.false_rejection = false_rejection
        self.points = points
        self.flip_y = flip_y
        self.bearings = bearings
        self.skip_bad = skip_bad
        self.name = name
        self.reject_label = reject_label
        self.n_jobs = n_jobs
        self.threads = threads

    def training_options(self) -> dict[str, Any]:
        """The parameters as the engine names them."""
        options = {
            name: value
            for name, value in self.get_params(deep=False).items()
            if name not in _ELSEWHERE
        }
        return options | {"threads": _tasks.threads(self.threads)}

    def fit(self, X: Any, y: Any, groups: Any = None) -> GestureClassifier:
        """Trains on labelled traces. `groups` tells who drew each: calibration leaves them out."""
        traces, labels = _labels.checked(X, y)
        classes = np.unique(labels)
        rejected = _labels.reject_label(self.reject_label, classes)
        users = None if groups is None else _labels.texts(groups)
        names = _labels.texts(labels)
        if _tasks.spreads(self.n_jobs):
            recognizer, report = self._spread(traces, names, users)
        else:
            recognizer, report = _vesk.train(traces, names, users, self.training_options())
        for text in report["warnings"]:
            warnings.warn(text, stacklevel=2)
        # A class of which every trace was left out is no gesture of the model, nor a class.
        gesture_of = {entry["label"]: entry["gesture"] for entry in report["gestures"]}
        self.classes_ = np.array([c for c in classes if str(c) in gesture_of], classes.dtype)
        self._gestures = [gesture_of[str(c)] for c in self.classes_]
        self.reject_label_ = rejected
        self.recognizer_ = recognizer
        self.report_ = report
        return self

    def _spread(
        self, traces: Sequence[Any], names: list[str], users: list[str] | None
    ) -> tuple[_vesk.Recognizer, dict[str, Any]]:
        """The same training in tasks."""
        options = self.training_options() | {"threads": 1}
        plan = _vesk.TrainingPlan(traces, names, users, options)
        single = []
        for g in range(plan.gestures):
            task = plan.gesture_task(g)
            single.append(_tasks.NamedTask(f"train gesture {task.gesture}", task))
        with _tasks.workers(self.n_jobs) as run:
            trained = run(single)
            together = []
            for t in range(plan.trainings):
                last = t + 1 == plan.trainings
                title = "tell gestures apart" if last else f"calibrate without part {t + 1}"
                together.append(_tasks.NamedTask(title, plan.tell_apart_task(t, trained)))
            return plan.result(run(together))

    def predict(self, X: Any) -> Any:
        """(n,) labels; `reject_label_` where a trace is none of the gestures."""
        check_is_fitted(self)
        traces = list(X)
        if self.reject_label_ is None:
            return self.classes_[self._likeliest(traces)]
        class_of = dict(zip(self._gestures, self.classes_.tolist()))
        class_of[""] = self.reject_label_
        answers = [class_of[gesture] for gesture in self.recognizer_.verdicts(traces)]
        return self._labelled(answers)

    def _likeliest(self, traces: list[Any]) -> Any:
        margins = self._posteriors(traces)[1]
        for i in np.flatnonzero(np.isneginf(margins).all(axis=1)):
            raise _vesk.InputError(
                f"X[{i}]: found a trace that no gesture can be likeliest for, expected one with a "
                "direction (or set reject_label)"
            )
        return margins.argmax(axis=1)

    def _labelled(self, answers: list[Any]) -> Any:
        if self.classes_.dtype.kind == "O":
            labels = np.empty(len(answers), dtype=object)
            labels[:] = answers
            return labels
        # As wide as the classes and the reject label need.
        kind = np.result_type(self.classes_, np.asarray(self.reject_label_))
        return np.array(answers, dtype=kind)

    def _posteriors(self, X: Any) -> tuple[Any, Any]:
        check_is_fitted(self)
        return self.recognizer_.posteriors(list(X), self._gestures)

    def predict_proba(self, X: Any) -> Any:
        """(n, K + 1) posteriors: of each class in the order of `classes_`, then of the threshold.

        A trace is rejected, mostly, where the last one is the largest.
        """
        return self._posteriors(X)[0]

    def decision_function(self, X: Any) -> Any:
        """(n, K): ln(weighted probability / threshold) of each class; above 0 it is likelier.

        With two classes (n,): how much likelier the second is than the first.
        """
        margins = self._posteriors(X)[1]
        if len(self.classes_) != 2:
            return margins
        with np.errstate(invalid="ignore"):
            return np.nan_to_num(margins[:, 1] - margins[:, 0], nan=0.0)

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the model file, which any host of the library reads. Labels become texts in it."""
        check_is_fitted(self)
        self.recognizer_.save(path)

    @classmethod
    def load(cls, path: str | os.PathLike[str], **params: Any) -> GestureClassifier:
        """A fitted classifier with the model of a file; its classes are the gestures' names.

        `params`: those that count in recognition, `points`, `flip_y`, `bearings` and
        `reject_label`, and for a training after this one, any.
        """
        classifier = cls(**params)
        recognizer = _vesk.Recognizer.load(
            path, classifier.points, classifier.flip_y, classifier.bearings
        )
        classifier.classes_ = np.unique(recognizer.gestures)
        classifier._gestures = classifier.classes_.tolist()
        classifier.reject_label_ = _labels.reject_label(
            classifier.reject_label, classifier.classes_
        )
        classifier.recognizer_ = recognizer
        classifier.report_ = {}
        return classifier

    def _more_tags(self) -> dict[str, Any]:
        return {"no_validation": True, "requires_y": True, "X_types": ["traces"]}

    def __sklearn_is_fitted__(self) -> bool:
        return hasattr(self, "recognizer_")

