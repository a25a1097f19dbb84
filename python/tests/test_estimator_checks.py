"""scikit-learn's own estimator checks, by name.

They draw fixed-width arrays, rows of features. `RowsAsTraces` is the classifier with each row made
a trace, feature i the height at x = i: all else is the classifier's own.
"""

import functools
import os
import pathlib
import re

import numpy as np
import pytest
from sklearn.base import clone
from sklearn.utils import estimator_checks

from vesk import GestureClassifier


class RowsAsTraces(GestureClassifier):
    """Takes rows of numbers for traces."""

    @staticmethod
    def traces(X):
        if not (isinstance(X, np.ndarray) and X.ndim == 2):
            return X
        # From the same first step on, so that one feature makes two steps.
        angles = 0.7 * np.column_stack([np.zeros(len(X)), np.asarray(X, dtype=float)])
        steps = np.stack([np.cos(angles), np.sin(angles)], axis=2)
        return list(np.cumsum(np.concatenate([np.zeros((len(X), 1, 2)), steps], axis=1), axis=1))

    def fit(self, X, y=None, groups=None):
        return super().fit(self.traces(X), y, groups)

    def predict(self, X):
        return super().predict(self.traces(X))

    def predict_proba(self, X):
        return super().predict_proba(self.traces(X))

    def decision_function(self, X):
        return super().decision_function(self.traces(X))

    def _more_tags(self):
        return {"no_validation": False, "X_types": ["2darray"], "poor_score": True}


def quick(kind=RowsAsTraces):
    return kind(
        states=4, threshold_states=2, iterations=1, discrimination=2, calibrate=False,
        reject_label=None, threads=1,
    )


class OfGesturesAlone(RowsAsTraces):
    """Without the threshold's column of `predict_proba`, and without a fixed number of features."""

    @staticmethod
    def traces(X):
        return RowsAsTraces.traces(np.asarray(X))

    def predict_proba(self, X):
        gestures = super().predict_proba(X)[:, :-1]
        return gestures / gestures.sum(axis=1, keepdims=True)

    def _more_tags(self):
        return {"no_validation": True, "poor_score": True}


def listed():
    """The checks that docs/python.md says are passed, and those left out, with a reason each."""
    source = pathlib.Path(os.environ["VESK_SOURCE_DIR"], "docs", "python.md")
    text = source.read_text(encoding="utf-8").split("## Estimator checks")[1].split("\n## ")[0]
    rows = re.findall(r"^\| `(check_\w+)` \| (.+) \|$", text, re.MULTILINE)
    left_out = dict(rows)
    assert len(left_out) == len(rows)
    return set(re.findall(r"`(check_\w+)`", text.split("\n| ")[0])), left_out


def applicable():
    checks = {"check_parameters_default_constructible": [
        estimator_checks.check_parameters_default_constructible]}
    for check in estimator_checks._yield_all_checks(quick()):
        function = check.func if isinstance(check, functools.partial) else check
        checks.setdefault(function.__name__, []).append(check)
    return checks


CHECKS = applicable()
PASSED, LEFT_OUT = listed()


def test_the_list_has_every_check_once():
    assert PASSED | set(LEFT_OUT) == set(CHECKS)
    assert not PASSED & set(LEFT_OUT)


@pytest.mark.parametrize("name", sorted(PASSED))
def test_passes(name):
    for check in CHECKS[name]:
        check("RowsAsTraces", quick())


@pytest.mark.parametrize("name", sorted(LEFT_OUT))
def test_is_left_out_for_a_reason(name):
    with pytest.raises((AssertionError, TypeError, ValueError)):
        for check in CHECKS[name]:
            check("RowsAsTraces", quick())


@pytest.mark.parametrize("name", ["check_classifiers_train", "check_decision_proba_consistency"])
def test_passes_but_for_the_threshold_and_fixed_features(name):
    for check in CHECKS[name]:
        check("OfGesturesAlone", quick(OfGesturesAlone))


def test_the_classifier_itself_is_cloned_and_shown():
    classifier = GestureClassifier(states=12, reject_label="none")
    for name in ("check_parameters_default_constructible", "check_no_attributes_set_in_init",
                 "check_get_params_invariance", "check_set_params"):
        getattr(estimator_checks, name)("GestureClassifier", classifier)
    assert clone(classifier).get_params() == classifier.get_params()
    assert repr(classifier) == "GestureClassifier(reject_label='none', states=12)"
