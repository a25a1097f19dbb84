"""Cross-validation, tuning and the template matcher."""

import pickle

import numpy as np
import pytest
from sklearn.model_selection import KFold

import vesk


@pytest.fixture(scope="module")
def evaluation(few):
    quick = vesk.GestureClassifier(discrimination=2, calibrate=False)
    return vesk.evaluate(few.X, few.y, few.groups, classifier=quick)


def test_leaves_one_user_out(evaluation, few):
    assert len(evaluation) == len(few.X)
    rates = evaluation.rates()
    assert rates["correct"][1] == len(few.X)
    assert sum(rates[kind][0] for kind in ("correct", "wrong", "rejected")) == len(few.X)
    assert evaluation.rates("templates")["arg_max"][0] > 0.8 * len(few.X)
    assert "Evaluation" in repr(evaluation)


def test_confusion_counts_every_trace(evaluation, few):
    names, counts = evaluation.confusion()
    assert names == sorted(set(few.y))
    assert counts.shape == (3, 4)
    assert counts.sum() == len(few.X)
    with pytest.raises(ValueError, match="method"):
        evaluation.confusion("guesses")


def test_verdicts_are_those_of_a_classifier_of_the_fold(evaluation, few):
    fold = np.unique(few.groups)[0]
    test = few.groups == fold
    model = vesk.GestureClassifier(discrimination=2, calibrate=False).fit(
        [x for x, t in zip(few.X, test) if not t], few.y[~test])
    answers = model.predict([x for x, t in zip(few.X, test) if t])
    assert [v[2] for v in evaluation.verdicts if test[v[0]]] == answers.tolist()


def test_is_the_same_spread_over_processes(evaluation, few):
    quick = vesk.GestureClassifier(discrimination=2, calibrate=False)
    spread = vesk.evaluate(few.X, few.y, few.groups, classifier=quick, n_jobs=2)
    assert pickle.dumps(spread) == pickle.dumps(evaluation)


def test_pickles(evaluation):
    twin = pickle.loads(pickle.dumps(evaluation))
    assert twin.verdicts == evaluation.verdicts
    assert twin.trade_off_svg() == evaluation.trade_off_svg()


def test_other_splitters(few):
    quick = vesk.GestureClassifier(discrimination=0, calibrate=False, iterations=1)
    assert len(vesk.evaluate(few.X, few.y, cv=KFold(2), classifier=quick, templates=False)) == 36
    assert len(vesk.evaluate(few.X, few.y, classifier=quick, unknown_gestures=False)) == 36


def test_refuses_folds_outside_the_traces(few):
    with pytest.raises(ValueError, match="fold 0 test"):
        vesk._vesk.evaluate(few.X, few.y, None, [([0], [99])], {}, False, False)


def test_tuning_spreads_folds_and_finds_the_same(few):
    start = vesk.GestureClassifier(discrimination=0, iterations=1, sub_models=1)
    found = [
        vesk.tune(few.X, few.y, few.groups, classifier=start, rounds=1, n_jobs=jobs)
        for jobs in (1, 2)
    ]
    assert found[0][0].get_params() == found[1][0].get_params()
    assert found[0][1] == found[1][1]
    assert found[0][1][0][0] == "start" and len(found[0][1]) > 5
    assert found[0][0].fit(few.X, few.y).score(few.X, few.y) > 0.8


def test_template_matcher(few):
    matcher = vesk.TemplateMatcher(few.X, few.y, few.groups)
    names, distances = matcher.nearest(few.X[:5])
    assert names == few.y[:5].tolist()
    assert distances.tolist() == [0] * 5
    assert matcher.threshold > 0
    assert matcher.nearest([np.zeros((2, 2))])[0] == [""]
    with pytest.raises(ValueError):
        vesk.TemplateMatcher(few.X, few.y[:1])
