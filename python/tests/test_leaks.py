"""A million calls leave nothing behind."""

import pickle
import resource

import numpy as np

import vesk


def resident():
    """Bytes in memory now."""
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * resource.getpagesize()


def grown(call, warm, count):
    for _ in range(warm):
        call()
    before = resident()
    for _ in range(count):
        call()
    return resident() - before


def test_a_million_calls(fitted, drawn):
    trace = vesk.resample(drawn.X[0], 5)
    quantizer = vesk.VectorQuantizer2D([0.0, 90.0, 180.0, 270.0])
    model = vesk.LeftRightHMM(2, 4, 1)
    model.estimate(vesk.SegmentationType.EQUAL_SEGMENTS, [[0, 1, 2, 3]])
    o = np.array([0, 1, 2], dtype=np.int32)
    for call, count in (
        (lambda: quantizer.quantize(trace, 0, False), 300_000),
        (lambda: model.log_likelihood(o), 300_000),
        (lambda: model.forward_proc(o), 200_000),
        (lambda: model.a, 200_000),
    ):
        # A byte a call would show.
        assert grown(call, 2_000, count) < count


def test_refusals_pickles_and_recognition(fitted, drawn):
    model = vesk.LeftRightHMM(8, 8, 1)
    recognizer = fitted.recognizer_

    def refused():
        try:
            model.log_likelihood([9])
        except ValueError:
            pass

    for call, count in (
        (refused, 50_000),
        (lambda: pickle.loads(pickle.dumps(model)), 20_000),
        (lambda: recognizer.recognize(drawn.X[:1]), 3_000),
        (lambda: recognizer.posteriors(drawn.X[:1], recognizer.gestures), 3_000),
        (lambda: model.train_multiple([[0, 1, 2, 3, 4, 5, 6, 7]], 1), 10_000),
    ):
        assert grown(call, 500, count) < max(200_000, 4 * count)
