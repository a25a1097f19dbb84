"""The estimator with scikit-learn's tools, its labels, its files."""

import json
import pickle

import numpy as np
import pytest
from sklearn.base import clone
from sklearn.model_selection import GridSearchCV, LeaveOneGroupOut, StratifiedKFold, cross_val_score
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import FunctionTransformer

import vesk


def quick(**params):
    return vesk.GestureClassifier(**{"calibrate": False, "discrimination": 4, **params})


def with_kind(y, kind):
    """The labels as texts, numbers, or objects of both."""
    numbers = np.unique(y, return_inverse=True)[1]
    return {"texts": y, "numbers": numbers * 3 - 1, "objects": y.astype(object),
            "large": numbers + 2**40}[kind]


@pytest.mark.parametrize("kind", ["texts", "numbers", "objects", "large"])
def test_labels_of_every_kind_come_back(few, kind):
    y = with_kind(few.y, kind)
    reject = -9 if kind == "numbers" else "auto"
    model = quick(reject_label=reject).fit(few.X, y)
    answers = model.predict(few.X)
    assert model.classes_.tolist() == sorted(set(y.tolist()))
    assert set(answers.tolist()) <= set(y.tolist()) | {model.reject_label_}
    assert model.score(few.X, y) > 0.9
    assert answers.dtype.kind == y.dtype.kind


def test_rejects_with_the_label_asked_for(few):
    scribble = np.random.default_rng(1).normal(size=(60, 2))
    still = np.zeros((5, 2))
    assert quick().fit(few.X, few.y).predict([scribble, still]).tolist() == ["", ""]
    stranger = quick(reject_label="something else than those").fit(few.X, few.y)
    assert stranger.predict([scribble])[0] == "something else than those"
    never = quick(reject_label=None).fit(few.X, few.y)
    assert never.predict([scribble])[0] in few.y
    with pytest.raises(vesk.InputError, match=r"X\[1\]"):
        never.predict([scribble, still])
    with pytest.raises(ValueError, match="is a class"):
        quick(reject_label="star").fit(few.X, few.y)
    with pytest.raises(ValueError, match="is a class"):
        quick().fit(few.X, with_kind(few.y, "numbers"))


def test_posteriors_and_margins(fitted, drawn):
    p = fitted.predict_proba(drawn.X[:50])
    assert p.shape == (50, len(fitted.classes_) + 1)
    assert p.sum(axis=1) == pytest.approx(np.ones(50))
    d = fitted.decision_function(drawn.X[:50])
    assert d.shape == (50, len(fitted.classes_))
    # The threshold's posterior is the largest exactly where no margin is above 0.
    assert ((d.max(axis=1) > 0) == (p.argmax(axis=1) < len(fitted.classes_))).all()
    assert np.exp(d) == pytest.approx(p[:, :-1] / p[:, -1:], rel=1e-6)
    answers = fitted.predict(drawn.X[:50])
    known = answers != ""
    assert known.any()
    assert (fitted.classes_[d.argmax(axis=1)][known] == answers[known]).all()
    result = fitted.recognizer_.recognize(drawn.X[:1])[0]
    assert d[0].max() == pytest.approx(result.margin)
    assert fitted.predict_proba([np.zeros((3, 2))])[0, -1] == 1


def test_two_classes_have_one_decision(few):
    two = few.y != "star"
    model = quick(reject_label=None).fit([x for x, k in zip(few.X, two) if k], few.y[two])
    d = model.decision_function(few.X)
    assert d.shape == (len(few.X),)
    assert (model.classes_[(d > 0).astype(int)] == model.predict(few.X)).all()


def test_works_with_the_tools_of_scikit_learn(few):
    scaled = make_pipeline(FunctionTransformer(lambda X: [2 * x for x in X]), quick())
    assert scaled.fit(few.X, few.y).score(few.X, few.y) > 0.9

    scores = cross_val_score(quick(), few.X, few.y, groups=few.groups, cv=LeaveOneGroupOut())
    assert scores.shape == (3,) and scores.min() > 0.5
    informed = cross_val_score(
        quick(calibrate=True), few.X, few.y, groups=few.groups, cv=LeaveOneGroupOut(),
        fit_params={"groups": few.groups})
    assert informed.shape == (3,)

    search = GridSearchCV(quick(), {"states": [8, 24], "reject_label": [None]},
                          cv=StratifiedKFold(2)).fit(few.X, few.y)
    assert search.best_params_["states"] in (8, 24)
    assert search.predict(few.X[:2]).shape == (2,)


def test_arrays_lists_and_stacks_of_traces_are_the_same(few):
    same = [vesk.resample(x) for x in few.X]
    texts = {quick().fit(X, y).recognizer_.text() for X, y in (
        (same, few.y), (np.stack(same), few.y), (tuple(x.tolist() for x in same), few.y.tolist()),
        (np.array(same + [None], dtype=object)[:-1], few.y))}
    assert len(texts) == 1


def test_fits_the_same_again(few):
    model = quick()
    first = model.fit(few.X, few.y).recognizer_.text()
    assert model.fit(few.X, few.y).recognizer_.text() == first
    assert clone(model).fit(few.X, few.y).recognizer_.text() == first
    assert quick(threads=2).fit(few.X, few.y).recognizer_.text() == first


def test_nothing_is_drawn_at_random(few):
    texts = set()
    for seed in (1, 2):
        np.random.seed(seed)
        state = np.random.get_state()[1].tobytes()
        texts.add(vesk.GestureClassifier(discrimination=2).fit(few.X, few.y).recognizer_.text())
        assert np.random.get_state()[1].tobytes() == state
    assert len(texts) == 1


def test_pickles(fitted, drawn):
    twin = pickle.loads(pickle.dumps(fitted))
    assert twin.recognizer_.text() == fitted.recognizer_.text()
    assert (twin.predict_proba(drawn.X) == fitted.predict_proba(drawn.X)).all()


@pytest.mark.parametrize("params, text", [
    ({"states": 1}, "found 1 for states, expected 2 to 200"),
    ({"symbols": 400}, "symbols"),
    ({"first_estimate": "best"}, "expected 'even_cut' or 'equal_segments'"),
    ({"codebook": [0.0, 400.0]}, "found the direction 400 in the codebook"),
    ({"name": "two words"}, "model name"),
    ({"points": 1}, "points"),
    ({"emission_floor": float("nan")}, "emission floor"),
])
def test_names_the_option_that_is_wrong(few, params, text):
    with pytest.raises(ValueError, match=text):
        quick(**params).fit(few.X, few.y)


def test_names_the_trace_that_is_wrong(few):
    with pytest.raises(TypeError, match="states"):
        quick(states="many").fit(few.X, few.y)
    with pytest.raises(vesk.InputError, match=r"X\[1\]: found a trace of gesture"):
        quick().fit([few.X[0], np.zeros((4, 2))], few.y[:2])
    with pytest.raises(ValueError, match=r"X\[0\]: found shape \(4,\), expected \(any, 2\)"):
        quick().fit([np.zeros(4)], ["a"])
    with pytest.raises(ValueError, match="found labels of shape"):
        quick().fit(few.X, few.y[:2])
    with pytest.raises(ValueError, match="no traces"):
        quick().fit([], [])
    with pytest.raises(ValueError, match="groups: found 1"):
        quick().fit(few.X, few.y, groups=["one"])


def test_leaves_bad_traces_out_when_asked(few):
    with pytest.warns(UserWarning, match="trace"):
        model = quick(skip_bad=True).fit(
            few.X + [np.zeros((4, 2)), few.X[0]], np.append(few.y, ["circle", "new one"]))
    assert len(model.report_["skipped"]) == 1
    # A model's names have no blanks; the labels keep theirs.
    assert "new one" in model.classes_ and "new_one" in model.recognizer_.gestures
    assert "new one" in set(model.predict(few.X[:1])) | set(model.classes_)


def test_user_traces_calibrate(few):
    report = vesk.GestureClassifier(discrimination=2).fit(
        few.X, few.y, groups=few.groups).report_
    assert report["calibration_runs"] == 3
    assert report["gestures"][0]["users"] == 3


def same_verdicts(program, model_file, traces_file):
    lines = program("recognize", "-m", model_file, traces_file, "--json").splitlines()
    expected = [json.loads(line)["gesture"] for line in lines]
    traces = vesk.read_traces(traces_file)
    found = vesk.GestureClassifier.load(model_file).predict(traces.X)
    assert found.tolist() == expected
    return len(expected)


def test_model_files_and_verdicts_are_those_of_the_program(program, tmp_path):
    program("generate", "-o", tmp_path / "t.jsonl", "--users", 3, "--repetitions", 4)
    program("train", tmp_path / "t.jsonl", "-o", tmp_path / "gestures.model")
    traces = vesk.read_traces(tmp_path / "t.jsonl")
    model = vesk.GestureClassifier().fit(traces.X, traces.y, groups=traces.groups)
    model.save(tmp_path / "python.model")
    trained = (tmp_path / "gestures.model").read_bytes()
    assert (tmp_path / "python.model").read_bytes() == trained
    assert same_verdicts(program, tmp_path / "python.model", tmp_path / "t.jsonl") == len(traces.X)
    loaded = vesk.GestureClassifier.load(tmp_path / "python.model", reject_label="none")
    assert loaded.classes_.tolist() == sorted(set(traces.y))
    assert clone(loaded).get_params()["reject_label"] == "none"
    with pytest.raises(vesk.InputError, match="missing.model"):
        vesk.GestureClassifier.load(tmp_path / "missing.model")


def test_verdicts_on_every_recorded_trace_are_those_of_the_program(program, recorded, tmp_path):
    counts = {}
    for name in ("unistroke16", "unistroke16_pilot", "sketch_shapes", "pen_digits", "pen_letters"):
        file = recorded / f"{name}.jsonl"
        model = tmp_path / f"{name}.model"
        program("train", file, "-o", model, "--no-calibration", "--skip-bad", "--sub-models", 1,
                "--discrimination", 2)
        counts[name] = same_verdicts(program, model, file)
    assert min(counts.values()) >= 308


def test_turned_copies_stand_beside_the_models_of_many_traces(drawn):
    one = np.flatnonzero(drawn.y == "star")
    other = np.flatnonzero(drawn.y == "circle")
    some = np.concatenate([one, one, other])  # 24 and 12 traces
    X, y = [drawn.X[i] for i in some], drawn.y[some]
    settings = {"calibrate": False, "discrimination": 0, "iterations": 1, "sub_models": 1}
    for turns, models in ((None, 2), (0, 2), (1, 4), (3, 8)):
        model = vesk.GestureClassifier(turns=turns, **settings).fit(X, y)
        assert model.report_["turns"] == (turns or 0)
        names = [it.name for it in model.recognizer_.models]
        assert sorted(names) == ["circle"] + ["star"] * (models - 1)
    with pytest.raises(ValueError, match="turned copies"):
        vesk.GestureClassifier(turns=5, **settings).fit(X, y)
