"""scikit-learn's own estimator checks, by name.

They draw fixed-width arrays, rows of features. `RowsAsTraces` is the classifier with each row made
a trace, feature i the height at x = i: all else is the classifier's own.
"""

import functools

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


def quick():
    return RowsAsTraces(
        states=4, threshold_states=2, iterations=1, discrimination=2, calibrate=False,
        reject_label=None, threads=1,
    )


# What these ask of rows of numbers or of `predict_proba`, and why it is not so here.
LEFT_OUT = {
    "check_classifier_data_not_an_array": "X is a list of arrays, not one that is like an array",
    "check_classifiers_train": "wants K columns of predict_proba; the threshold has one, too",
    "check_complex_data": "asks for one message on rows of complex numbers",
    "check_decision_proba_consistency": "the threshold takes its share of predict_proba",
    "check_estimator_sparse_data": "a sparse matrix has no traces",
    "check_estimators_empty_data_messages": "asks about rows without features",
    "check_estimators_nan_inf": "wants a text about X as a whole; ours names trace and position",
    "check_fit2d_predict1d": "asks to reshape rows",
    "check_n_features_in": "traces differ in length: there is no number of features",
}


def applicable():
    checks = {"check_parameters_default_constructible": [
        estimator_checks.check_parameters_default_constructible]}
    for check in estimator_checks._yield_all_checks(quick()):
        function = check.func if isinstance(check, functools.partial) else check
        checks.setdefault(function.__name__, []).append(check)
    return checks


CHECKS = applicable()


@pytest.mark.parametrize("name", sorted(set(CHECKS) - set(LEFT_OUT)))
def test_passes(name):
    for check in CHECKS[name]:
        check("RowsAsTraces", quick())


@pytest.mark.parametrize("name", sorted(LEFT_OUT))
def test_is_left_out_for_a_reason(name):
    assert name in CHECKS
    with pytest.raises((AssertionError, TypeError, ValueError)):
        for check in CHECKS[name]:
            check("RowsAsTraces", quick())


def test_the_classifier_itself_is_cloned_and_shown():
    classifier = GestureClassifier(states=12, reject_label="none")
    for name in ("check_parameters_default_constructible", "check_no_attributes_set_in_init",
                 "check_get_params_invariance", "check_set_params"):
        getattr(estimator_checks, name)("GestureClassifier", classifier)
    assert clone(classifier).get_params() == classifier.get_params()
    assert repr(classifier) == "GestureClassifier(reject_label='none', states=12)"
