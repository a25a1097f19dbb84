"""The general model: arrays in and out, refusals, pickles."""

import copy
import os
import pickle

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

import vesk


def coin():
    """Two states that show symbol 0 with 0.9 and 0.2."""
    model = vesk.HMM(2, 2)
    model.name = "coin"
    model.pi = [0.5, 0.5]
    model.a = [[0.75, 0.25], [0.25, 0.75]]
    model.b = [[0.9, 0.1], [0.2, 0.8]]
    return model


def state(model):
    return [np.asarray(x).tobytes() for x in (model.pi, model.a, model.b, model.vocab)]


def test_forward_probability_of_a_worked_example():
    # t 0: 0.45, 0.1; t 1: (0.45 * 0.75 + 0.1 * 0.25) * 0.1 and (0.45 * 0.25 + 0.1 * 0.75) * 0.8
    alpha = coin().forward_proc([0, 1])
    assert alpha == pytest.approx(np.array([[0.45, 0.03625], [0.1, 0.15]]))
    assert coin().forward_probability([0, 1]) == pytest.approx(0.18625)
    assert coin().backward_probability(np.array([0, 1], dtype=np.uint8)) == pytest.approx(0.18625)


def test_viterbi_of_a_worked_example():
    probability, path = coin().viterbi([0, 0, 1])
    # 0, 0, 1: 0.5 0.9 * 0.75 0.9 * 0.25 0.8 beats staying, with 0.75 0.1 at the end
    assert path.tolist() == [0, 0, 1]
    assert probability == pytest.approx(0.45 * 0.675 * 0.2)


def test_posteriors_sum_to_one():
    model = coin()
    o = [0, 1, 1]
    alpha, beta = model.forward_proc(o), model.backward_proc(o)
    for t in range(3):
        assert sum(model.gamma(i, t, alpha, beta) for i in range(2)) == pytest.approx(1)
    assert sum(
        model.xi(i, j, 0, o, alpha, beta) for i in range(2) for j in range(2)
    ) == pytest.approx(1)


def test_many_sequences_at_once_are_as_likely_as_one_by_one():
    model = coin()
    sequences = [[0, 1], [], [1, 1, 0, 0, 1]]
    assert model.likelihoods(sequences).tolist() == [
        model.forward_probability(o) for o in sequences]
    assert model.likelihoods([]).shape == (0,)
    with pytest.raises(ValueError, match=r"sequences\[1\]\[0\]: found the symbol 2"):
        model.likelihoods([[0], [2]])


def test_no_symbols():
    assert coin().forward_probability([]) == 0
    assert coin().forward_proc([]).shape == (2, 0)
    assert coin().viterbi([])[1].tolist() == []


@pytest.mark.parametrize("observation, text", [
    ([0, 2], "observation[1]: found the symbol 2, expected 0 to 1"),
    ([-1], "observation[0]: found the symbol -1, expected 0 to 1"),
    ([0.5], "observation: found values of type float64, expected whole numbers"),
    ([[0, 1]], "observation: found shape (1, 2), expected (any,)"),
    ("01", "observation: found"),
    (np.array([2**64 - 1], dtype=np.uint64), "observation[0]: found the symbol -1"),
    (None, "observation: found"),
])
def test_refuses_symbols(observation, text):
    model = coin()
    for call in (model.forward_proc, model.backward_proc, model.forward_probability,
                 model.backward_probability, model.viterbi, lambda o: model.baum_welch(o, 1)):
        with pytest.raises(ValueError) as caught:
            call(observation)
        assert str(caught.value).startswith(text)


@pytest.mark.parametrize("field, value", [
    ("pi", [1.0]), ("a", np.zeros((2, 3))), ("b", np.zeros(4)), ("vocab", np.zeros((2, 2))),
    ("a", [["x", "y"], ["z", "w"]]), ("b", [[1j, 0], [0, 0]]), ("pi", [[0.5], [0.5, 0.5]]),
])
def test_refuses_tables_of_another_shape_and_keeps_its_own(field, value):
    model = coin()
    before = state(model)
    with pytest.raises(ValueError, match=field):
        setattr(model, field, value)
    assert state(model) == before


@pytest.mark.parametrize("sizes", [(0, 2), (2, 0), (-1, 2), (50_000, 50_000), (2, 2, 0)])
def test_refuses_sizes(sizes):
    with pytest.raises(ValueError):
        vesk.HMM(*sizes)


def test_refuses_indices_outside_the_tables():
    model = coin()
    o = [0, 1]
    alpha, beta = model.forward_proc(o), model.backward_proc(o)
    for call in (lambda: model.gamma(2, 0, alpha, beta), lambda: model.gamma(0, 2, alpha, beta),
                 lambda: model.gamma(0, 0, alpha, beta[:, :1]),
                 lambda: model.xi(0, 0, 1, o, alpha, beta), lambda: model.xi(0, -1, 0, o, alpha, beta),
                 lambda: model.xi(0, 0, 0, [0], alpha, beta), lambda: model.gen_seq(-1),
                 lambda: model.baum_welch(o, -1)):
        with pytest.raises(ValueError):
            call()


def test_fields_are_copies():
    model = coin()
    model.a[0, 0] = 5
    given = np.full((2, 2), 0.5)
    model.b = given
    given[0, 0] = 7
    assert model.a[0, 0] == 0.75
    assert model.b[0, 0] == 0.5


def test_takes_any_layout_of_memory():
    model = vesk.HMM(3, 3)
    a = np.arange(9.0).reshape(3, 3)
    model.a = np.asfortranarray(a)
    assert (model.a == a).all()
    model.a = np.repeat(a, 2, axis=1)[:, ::2]
    assert (model.a == a).all()


@settings(max_examples=50, deadline=None)
@given(st.lists(st.floats(width=64, allow_nan=True), min_size=6, max_size=6), st.text(max_size=5))
def test_pickles_keep_every_bit(values, name):
    model = vesk.HMM(2, 3)
    model.b = np.array(values).reshape(2, 3)
    model.name = name
    model.vocab_values = values[:3]
    for twin in (pickle.loads(pickle.dumps(model)), copy.copy(model), copy.deepcopy(model)):
        assert state(twin) == state(model)
        assert twin.name == name
        assert twin.vocab_values.tobytes() == model.vocab_values.tobytes()


def test_refuses_pickles_of_something_else():
    with pytest.raises(ValueError):
        vesk.HMM.__new__(vesk.HMM).__setstate__((1, 2))


def test_training_makes_what_it_saw_likelier():
    model = coin()
    before = model.forward_probability([0, 0, 0, 1])
    model.baum_welch([0, 0, 0, 1], 1)
    assert model.forward_probability([0, 0, 0, 1]) > before


def test_dump_is_what_print_prints(capfd):
    model = coin()
    text = model.dump()
    assert capfd.readouterr().out == ""
    model.print()
    assert capfd.readouterr().out == text
    assert text.startswith("name: coin\nnumStates: 2\n")


def test_files(tmp_path):
    model = coin()
    model.save(tmp_path / "coin.hmm")
    assert (vesk.HMM.load(str(tmp_path / "coin.hmm")).a == model.a).all()
    with pytest.raises(OSError, match="missing"):
        vesk.HMM.load(tmp_path / "missing")
    with pytest.raises(OSError, match="missing"):
        vesk.HMM.load(os.fsencode(tmp_path) + b"/missing\xff")
    with pytest.raises(OSError, match="no_folder"):
        model.save(tmp_path / "no_folder" / "coin.hmm")
    with pytest.raises(ValueError, match="null"):
        model.save("a\0b")
    model.name = "two words"
    with pytest.raises(ValueError, match="one word"):
        model.save(tmp_path / "coin.hmm")


def test_a_damaged_file_makes_no_model_that_harms(tmp_path):
    (tmp_path / "bad.hmm").write_text("x\n-3 7 1\n1 2")
    try:
        model = vesk.HMM.load(tmp_path / "bad.hmm")
    except (ValueError, MemoryError):
        return
    for observation in ([], [0], [0, 3, 6]):
        try:
            model.forward_probability(observation)
        except (ValueError, MemoryError):
            pass
    repr(model)
    pickle.loads(pickle.dumps(model))


def test_a_file_that_declares_too_much_is_named(tmp_path):
    path = tmp_path / "huge.hmm"
    path.write_text("x\n100000 100000 1\n1 2")
    for load in (vesk.HMM.load, vesk.LeftRightHMM.load):
        with pytest.raises(MemoryError, match="huge.hmm: declares more"):
            load(path)


def test_sampling_stays_in_the_vocabulary():
    model = coin()
    sequence = model.gen_seq(50)
    assert sequence.shape == (50,)
    assert set(sequence) <= {0, 1}
    assert not model.needs_seed
    assert 0 <= model.rand_d(2.0) < 2


def test_repr():
    assert repr(coin()) == "<HMM 'coin': 2 states, 2 symbols>"
    assert vesk.HMM.divide(0, 0) == 0
