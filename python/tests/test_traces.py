"""Lists of traces: as a list of arrays, and what comes of them elsewhere."""

import pickle

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

import vesk

TRACES = [np.zeros((0, 2)), np.array([[1.0, 2.0], [3.0, 4.0]]), np.array([[5.0, np.nan]])]


def same(found, expected):
    return [np.asarray(x).tobytes() for x in found] == [np.asarray(x).tobytes() for x in expected]


def test_is_the_list_it_was_made_of():
    traces = vesk.TraceList(TRACES)
    assert len(traces) == 3 and same(traces, TRACES) and same([traces[-1]], TRACES[-1:])
    assert traces[0].shape == (0, 2)
    assert repr(traces) == "<TraceList: 3 traces, 3 positions>"
    assert traces.__sizeof__() >= 3 * 16
    with pytest.raises(IndexError):
        traces[3]
    with pytest.raises(ValueError, match="read-only"):
        traces[1][0, 0] = 7
    assert same(vesk.TraceList(traces), TRACES)
    assert len(vesk.TraceList([])) == 0


def test_parts_and_sums_are_lists_of_traces_too():
    traces = vesk.TraceList(TRACES)
    for found, expected in (
        (traces[1:], TRACES[1:]), (traces[::-1], TRACES[::-1]),
        (traces[[2, 0]], [TRACES[2], TRACES[0]]),
        (traces[np.array([True, False, True])], [TRACES[0], TRACES[2]]),
        (traces[np.array([], dtype=int)], []),
        (traces + TRACES[:1], TRACES + TRACES[:1]), (TRACES[:1] + traces, TRACES[:1] + TRACES),
    ):
        assert isinstance(found, vesk.TraceList) and same(found, expected)


@settings(max_examples=50, deadline=None)
@given(st.lists(st.lists(st.tuples(st.floats(), st.floats()), max_size=4), max_size=6))
def test_travels_exactly(points):
    traces = [np.array(p, dtype=float).reshape(-1, 2) for p in points]
    twin = pickle.loads(pickle.dumps(vesk.TraceList(traces)))
    assert same(twin, traces)
    assert [len(x) for x in twin] == [len(x) for x in traces]


def test_refuses_what_is_no_trace():
    with pytest.raises(ValueError, match=r"X\[1\]: found shape \(3, 3\), expected \(any, 2\)"):
        vesk.TraceList([TRACES[1], np.zeros((3, 3))])
    with pytest.raises(ValueError, match="X: found"):
        vesk.TraceList("traces")
