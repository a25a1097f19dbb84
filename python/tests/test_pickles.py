"""Pickles and copies have every field, to the bit, of every class that can be pickled."""

import copy
import pickle

import numpy as np
import pytest

import vesk
from vesk import _vesk

THIRD = 1 / 3  # has no short decimal


def contents(thing):
    """All public fields of an object, as plain values that compare exactly."""
    if isinstance(thing, np.ndarray):
        return thing.dtype.str, thing.shape, thing.tobytes()
    if isinstance(thing, (list, tuple)):
        return [contents(item) for item in thing]
    if thing is None or isinstance(thing, (bool, int, float, str)):
        return thing
    names = [name for name in dir(thing) if not name.startswith("_")]
    fields = {name: getattr(thing, name) for name in names}
    return {name: contents(value) for name, value in fields.items() if not callable(value)}


def filled(model):
    """Another value than a new model's in every field that can be set."""
    N, M = model.num_states, model.vocab_size
    model.name, model.needs_seed = "third \udcff", False
    model.pi, model.a = np.full(N, THIRD), np.full((N, N), THIRD / 2)
    model.b, model.vocab = np.full((N, M), THIRD / 4), np.full((M, model.dimension), THIRD / 8)
    model.vocab_values = [THIRD]
    return model


def left_right():
    model = filled(vesk.LeftRightHMM(2, 3, 2, [[0, 1], [], [2]]))
    model.convergence_threshold = THIRD
    model.state_symbols = [[0, 2], [1]]
    return model


def composed():
    model = vesk.RecognitionModelHMM([left_right(), filled(vesk.HMM(1, 3))], THIRD)
    model.stage([1, 0], np.eye(2) * THIRD, np.full((2, 3), THIRD), np.full((3, 2), THIRD))
    assert model.create_recognition_hmm_from_parameters()
    model.name, model.codebook = "third", [THIRD, 100 * THIRD]
    model.prox_filter_threshold, model.rotation_allowed = THIRD, False
    return model


def quantizer():
    made = vesk.VectorQuantizer2D([THIRD, 9.0])
    made.codebook_size = 7
    return made


def new_of(thing):
    """An object of the same class with nothing in it, to see that all of a filled one differs."""
    return {
        vesk.HMM: lambda: vesk.HMM(1, 1),
        vesk.LeftRightHMM: lambda: vesk.LeftRightHMM(1, 1, 1),
        vesk.RecognitionModelHMM: vesk.RecognitionModelHMM,
        vesk.VectorQuantizer2D: vesk.VectorQuantizer2D,
        vesk.KMeansMotionVec: lambda: vesk.KMeansMotionVec([], []),
    }[type(thing)]()


@pytest.mark.parametrize("make", [
    lambda: filled(vesk.HMM(2, 3, 2)), left_right, composed, quantizer,
    lambda: vesk.KMeansMotionVec([THIRD], [[THIRD], []]),
])
def test_every_field_of_the_librarys_classes(make):
    thing = make()
    expected, empty = contents(thing), contents(new_of(thing))
    always = {"dimension"} if isinstance(thing, vesk.LeftRightHMM) else set()
    assert {name for name in expected if expected[name] == empty[name]} == always
    for protocol in range(2, pickle.HIGHEST_PROTOCOL + 1):
        assert contents(pickle.loads(pickle.dumps(thing, protocol))) == expected
    if hasattr(thing, "__copy__"):
        assert contents(copy.copy(thing)) == contents(copy.deepcopy(thing)) == expected


def test_the_clusterers_data_travels_too():
    clusterer = vesk.KMeansMotionVec([0.0, 90.0], [[100.0, 1.0], []])
    twin = pickle.loads(pickle.dumps(clusterer))
    assert contents(twin.classify()) == contents(clusterer.classify())


def test_every_field_of_the_hosts_classes(fitted, few, tmp_path):
    fitted.save(tmp_path / "a.model")
    evaluation = vesk.evaluate(few.X, few.y, few.groups, classifier=vesk.GestureClassifier(
        discrimination=0, calibrate=False, iterations=1))
    for thing, ask in (
        (
            vesk.Recognizer.load(tmp_path / "a.model", 21, True, 4),
            lambda it: (it.text(), it.points, it.flip_y, it.bearings),
        ),
        (evaluation, lambda it: (it.rates(), it.confusion("templates")[1].tolist(),
                                 it.trade_off_svg())),
    ):
        twin = pickle.loads(pickle.dumps(thing))
        assert contents(twin) == contents(thing)
        assert ask(twin) == ask(thing)


def test_options_of_tasks_travel(few):
    """Values unlike the defaults, each of which changes what a task gives back."""
    options = {"points": 30, "flip_y": True, "bearings": 4, "states": 5, "delta": 2, "iterations": 1,
               "smoothing": 10.0, "emission_floor": 0.01, "threshold_states": 3,
               "threshold_smoothing": 11.0, "first_estimate": "equal_segments",
               "codebook": np.linspace(0, 300, 7)}
    task = _vesk.TrainingPlan(few.X, few.y, None, options).gesture_task(0)
    expected = pickle.dumps(pickle.loads(pickle.dumps(task)).run())
    assert pickle.dumps(task.run()) == expected
    for name in options:
        fewer = {key: value for key, value in options.items() if key != name}
        other = _vesk.TrainingPlan(few.X, few.y, None, fewer).gesture_task(0)
        assert pickle.dumps(other.run()) != expected, name



def test_every_field_of_what_became_of_a_training(few):
    plan = _vesk.TrainingPlan(few.X, few.y, few.groups, {
        "points": 9, "states": 4, "iterations": 1, "discrimination": 0, "threshold_states": 2})
    trained = [plan.gesture_task(g).run() for g in range(plan.gestures)]
    told = plan.tell_apart_task(plan.trainings - 1, trained).run()
    models = told.__getstate__()[0]
    assert [it[3] for it in models] == [False] * 3
    models = [(*it[:3], g == 1) for g, it in enumerate(models)]
    logarithms = [[{"circle": np.array([THIRD, n])}, {}] for n in (1.0, 2.0)]
    state = (models, *logarithms, 3, 5)
    filled_in = _vesk.ToldApart.__new__(_vesk.ToldApart)
    filled_in.__setstate__(state)
    assert contents(pickle.loads(pickle.dumps(filled_in)).__getstate__()) == contents(state)
