"""The left-right model: estimates, training and its silent twins, pickles."""

import pickle

import numpy as np
import pytest

import vesk

SEQUENCES = [[0, 0, 1, 0, 1, 2], [0, 1, 2, 1, 2, 2], [1, 0, 1, 2, 0, 2]]
EQUAL = vesk.SegmentationType.EQUAL_SEGMENTS


def estimated():
    model = vesk.LeftRightHMM(3, 3, 1)
    model.name = "rise"
    model.estimate(EQUAL, SEQUENCES)
    return model


def test_estimate_starts_in_state_0_and_moves_right():
    model = estimated()
    assert model.pi.tolist() == [1, 0, 0]
    assert model.a.tolist() == [[0.5, 0.5, 0], [0, 0.5, 0.5], [0, 0, 1]]
    assert model.b.sum(axis=1) == pytest.approx([1, 1, 1])


def test_silent_twins_do_the_same_without_a_word(capfd):
    silent, printing = estimated(), vesk.LeftRightHMM(3, 3, 1)
    assert capfd.readouterr().out == ""
    printing.calc_initial_probs(EQUAL, SEQUENCES)
    assert capfd.readouterr().out != ""
    assert (printing.b == silent.b).all()

    steps = silent.train_multiple(SEQUENCES, 3)
    assert capfd.readouterr().out == ""
    printing.baum_welch_multiple(SEQUENCES, 3)
    assert capfd.readouterr().out != ""
    assert silent.b.tobytes() == printing.b.tobytes()
    assert [step.iteration for step in steps] == list(range(len(steps)))
    assert steps[0].new_log_likelihood > steps[0].old_log_likelihood
    assert "TrainingStep 0" in repr(steps[0])


def test_observers_may_end_the_training_and_their_errors_pass_through():
    model = estimated()
    seen = []

    def watch(step):
        seen.append(step.iteration)
        return False

    assert len(model.train_multiple(SEQUENCES, 5, watch)) == 1
    assert seen == [0]

    def fail(step):
        raise KeyError("mine")

    before = model.b
    with pytest.raises(KeyError, match="mine"):
        model.train_multiple(SEQUENCES, 5, fail)
    assert (model.b == before).all()


def test_scaled_passes_agree_with_the_plain_ones():
    model = estimated()
    o = [0, 0, 1, 2]
    alpha, scale = model.forward_proc_with_scale(o)
    assert np.prod(scale) == pytest.approx(model.forward_probability(o))
    assert model.log_likelihood(o) == pytest.approx(np.log(model.forward_probability(o)))
    likelihood, factors = model.forward_probability_with_scale(o)
    assert likelihood == model.log_likelihood(o)
    assert factors.tolist() == scale.tolist()
    beta = model.backward_proc_with_scale(o, scale)
    assert (alpha * beta * scale).sum(axis=0) == pytest.approx(np.ones(4))


def test_refuses_what_the_library_leaves_to_the_caller():
    model = estimated()
    for call in (lambda: model.log_likelihood([3]), lambda: model.estimate(EQUAL, [[0], [3]]),
                 lambda: model.train_multiple([[0, -1]], 1), lambda: model.train_multiple(SEQUENCES, -1),
                 lambda: model.baum_welch_multiple([[7]], 1), lambda: model.train_multiple([0, 1], 1),
                 lambda: model.backward_proc_with_scale([0, 1], [1.0]),
                 lambda: model.forward_probability_with_scale([3]),
                 lambda: model.forward_proc_with_scale([0.5]), lambda: model.train_multiple("01", 1),
                 lambda: vesk.LeftRightHMM(0, 3, 1), lambda: vesk.LeftRightHMM(2, 2, 1, [[2]])):
        with pytest.raises(ValueError):
            call()
    with pytest.raises(ValueError, match="found 2 lists, expected 3"):
        model.state_symbols = [[0], [1]]
    with pytest.raises(ValueError, match=r"sequences\[1\]\[0\]: found the symbol 3"):
        model.estimate(EQUAL, [[0], [3]])


def test_state_symbols():
    model = vesk.LeftRightHMM(2, 3, 1)
    model.state_symbols = [[0], [1, 2]]
    model.estimate(vesk.SegmentationType.STATE_SYMBOLS, [])
    assert [s.tolist() for s in model.state_symbols] == [[0], [1, 2]]
    assert model.b[1, 1] == model.b[1, 2] > model.b[1, 0] == pytest.approx(0.001)


def test_pickles_keep_every_bit():
    model = vesk.LeftRightHMM(3, 3, 2, SEQUENCES)
    model.estimate(EQUAL, SEQUENCES)
    model.train_multiple(SEQUENCES, 2)
    model.convergence_threshold = 0.1
    twin = pickle.loads(pickle.dumps(model))
    assert type(twin) is vesk.LeftRightHMM
    assert (twin.a.tobytes(), twin.b.tobytes()) == (model.a.tobytes(), model.b.tobytes())
    assert (twin.delta, twin.convergence_threshold) == (2, model.convergence_threshold)
    assert [s.tolist() for s in twin.training_sequences] == SEQUENCES


def test_files(tmp_path):
    model = estimated()
    model.vocab_values = [0.0, 1.0, 2.0]
    model.save(tmp_path / "rise.lr")
    assert vesk.LeftRightHMM.load(tmp_path / "rise.lr").b == pytest.approx(model.b, rel=1e-5)
    with pytest.raises(OSError):
        vesk.LeftRightHMM.load(tmp_path / "missing")


def test_repr_and_kind():
    assert repr(estimated()) == "<LeftRightHMM 'rise': 3 states, 3 symbols>"
    assert isinstance(estimated(), vesk.HMM)
