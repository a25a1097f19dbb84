"""The same bits as the C++ library on a trained model."""

import os
import subprocess

import numpy as np

import vesk


def shown(what, values):
    flat = np.asarray(values, dtype=float).ravel().tolist()
    return what, flat


def parsed(line):
    words = line.split(" ")
    numbers = [i for i, word in enumerate(words) if word.lstrip("-").startswith(("0x", "inf", "nan"))]
    start = numbers[0] if numbers else len(words)
    return " ".join(words[:start]), [float.fromhex(word) for word in words[start:]]


def test_same_bits_as_the_library(fitted, drawn, tmp_path):
    path = tmp_path / "golden.model"
    fitted.save(path)
    recognizer = vesk.Recognizer.load(path)
    o = recognizer.symbols(drawn.X[0])
    expected = subprocess.run(
        [os.environ["VESK_GOLDEN"], path, *map(str, o)], capture_output=True, text=True, check=True
    ).stdout.splitlines()

    low = vesk.RecognitionModelHMM()
    low.read(path)
    model = low.gestures[0]
    probability, states = model.viterbi(o)
    alpha, scale = model.forward_proc_with_scale(o)
    verdict = low.evaluate(o)
    found = [
        shown("a", model.a),
        shown("b", model.b),
        shown("forward", model.forward_proc(o)),
        shown("backward", model.backward_proc(o)),
        shown("viterbi", np.stack([np.r_[probability, np.zeros(len(o) - 1)], states])),
        shown("scaled", alpha),
        shown("scale", scale),
        shown("scaled backward", model.backward_proc_with_scale(o, scale)),
        shown("log", [model.log_likelihood(o)]),
        shown("evaluate", [verdict.threshold, verdict.winner] + [
            value for score in verdict.gestures
            for value in (score.weighted_probability, score.weighted_gamma)]),
    ]
    model.train_multiple([o, o], 2)
    found += [shown("trained a", model.a), shown("trained b", model.b)]
    assert [parsed(line) for line in expected] == found
