"""The quantiser, the filter and the clusterer."""

import copy
import pickle

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

import vesk

CORNER = np.array([[0.0, 0.0], [1.0, 0.0], [1.0, 1.0], [0.0, 1.0]])


def four():
    return vesk.VectorQuantizer2D([0.0, 90.0, 180.0, 270.0])


def test_directions_and_symbols():
    assert four().convert_sequence(CORNER).tolist() == [0, 90, 180]
    assert four().quantize(CORNER, 0, False).tolist() == [0, 1, 2]
    assert four().classify(CORNER[::-1], 0, False).tolist() == [0, 3, 2]
    assert four().quantize(CORNER[1:], 0, True).tolist() == [0, 1]
    assert four().classify_and_filter([[0, 0], [1, 0], [2, 0], [2, 1]], 0).tolist() == [0, 1]
    assert four().quantize(CORNER[:1], 0, False).tolist() == []
    assert four().rad_to_deg(np.pi) == pytest.approx(180)


@settings(max_examples=50, deadline=None)
@given(st.lists(st.tuples(st.floats(-1e6, 1e6), st.floats(-1e6, 1e6)), max_size=20))
def test_symbols_lie_in_the_codebook(points):
    trace = np.array(points, dtype=float).reshape(-1, 2)
    symbols = four().quantize(trace, 0, False)
    assert len(symbols) <= max(0, len(trace) - 1)
    assert ((symbols >= 0) & (symbols < 4)).all()


def test_evenly_spaced_codebook():
    quantizer = vesk.VectorQuantizer2D()
    assert not quantizer.codebook_ready
    quantizer.initialize_codebook(8)
    assert quantizer.codebook.tolist() == [45.0 * i for i in range(8)]
    assert quantizer.codebook_size == 8
    assert repr(four()) == "<VectorQuantizer2D: 4 directions>"


def test_learning_has_a_silent_twin(capfd):
    silent, printing = four(), four()
    trace = CORNER + 0.1 * np.array([[0, 0], [0, 1], [1, 0], [0, 0]])
    told = []
    silent.learn_codebook([trace], 0, lambda event, count: told.append((event, count)))
    assert capfd.readouterr().out == ""
    printing.train_codebook([trace], 0)
    assert capfd.readouterr().out == "4 positions after eq filter\n4 positions after prox filter\n\n"
    assert silent.codebook.tobytes() == printing.codebook.tobytes()
    assert told[0] == (vesk.CodebookTrainingEvent.AFTER_EQ_FILTER, 4)


@pytest.mark.parametrize("trace", [
    np.zeros((3, 3)), np.zeros(4), [[1, 2], [3]], "trace", [[1j, 0], [0, 0]], None,
])
def test_refuses_what_is_no_trace(trace):
    for call in (lambda: four().quantize(trace, 0, False), lambda: four().convert_sequence(trace),
                 lambda: four().classify_and_filter(trace, 0),
                 lambda: four().learn_codebook([trace], 0), lambda: vesk.proximity_filter(trace, 1),
                 lambda: vesk.resample(trace)):
        with pytest.raises(ValueError):
            call()


def test_refuses_sizes_and_empty_codebooks():
    quantizer = vesk.VectorQuantizer2D()
    for n in (-1, 10**7):
        with pytest.raises(ValueError):
            quantizer.initialize_codebook(n)
        with pytest.raises(ValueError):
            quantizer.codebook_size = n
    quantizer.codebook_size = 4
    with pytest.raises(ValueError):
        quantizer.quantize(CORNER, 0, False)
    for still in (np.zeros((0, 2)), CORNER[:1], np.ones((3, 2))):
        for learn in (four().learn_codebook, four().train_codebook):
            with pytest.raises(ValueError, match=r"traces\[1\]: found no step"):
                learn([CORNER, still], 0)
    with pytest.raises(ValueError):
        four().codebook = [[0.0]]


def test_pickles_and_files(tmp_path):
    quantizer = vesk.VectorQuantizer2D([1 / 3, 100.0])
    for twin in (pickle.loads(pickle.dumps(quantizer)), copy.copy(quantizer),
                 copy.deepcopy(quantizer)):
        assert twin.codebook.tobytes() == quantizer.codebook.tobytes()
        assert (twin.codebook_size, twin.codebook_ready) == (2, True)
    quantizer.save(tmp_path / "codes")
    assert vesk.VectorQuantizer2D.load(tmp_path / "codes").codebook.tolist() == [0.333333, 100]
    with pytest.raises(OSError):
        vesk.VectorQuantizer2D.load(tmp_path / "missing")


def test_proximity_filter():
    assert vesk.proximity_filter([[0, 0], [1, 0], [3, 0]], 2).tolist() == [[0, 0], [3, 0]]
    assert vesk.proximity_filter(np.zeros((0, 2)), 2).shape == (0, 2)


def test_clusterer():
    clusterer = vesk.KMeansMotionVec([0.0, 180.0], [[350.0, 20.0], [170.0, 200.0, 180.0]])
    assert [row.tolist() for row in clusterer.classify()] == [[0, 0], [1, 1, 1]]
    clusterer.learn(-1, 0.1)
    assert clusterer.centres == pytest.approx([5.0, 183.33], abs=0.1)
    twin = pickle.loads(pickle.dumps(clusterer))
    assert twin.centres.tobytes() == clusterer.centres.tobytes()
    assert repr(twin) == "<KMeansMotionVec: 2 centres, 2 rows>"
    with pytest.raises(ValueError):
        vesk.KMeansMotionVec([], [[1.0]]).classify()
    with pytest.raises(ValueError):
        vesk.KMeansMotionVec([[1.0]], [])


def test_resample():
    points = vesk.resample(CORNER, 4, bearings=0)
    assert points == pytest.approx(CORNER)
    assert vesk.resample(CORNER, 7, flip_y=True, bearings=0)[-1] == pytest.approx([0, -1])
    assert vesk.resample(CORNER).shape == (49, 2)
    assert vesk.resample(np.zeros((3, 2))).shape[0] == 0
    with pytest.raises(vesk.InputError):
        vesk.resample(CORNER, 1)
