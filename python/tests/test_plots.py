"""Plots are the engine's SVG, and show themselves in notebooks."""

import xml.etree.ElementTree as ET

import numpy as np
import pytest

import vesk


SVG = "{http://www.w3.org/2000/svg}"


def drawn_well(plot, words, **elements):
    """`elements`: how many of a kind the plot has, where the data says so."""
    root = ET.fromstring(plot._repr_svg_())
    assert root.tag == SVG + "svg"
    for kind, count in elements.items():
        assert len(list(root.iter(SVG + kind))) == count
    assert words in plot.svg
    assert plot._repr_html_().startswith("<style>") and plot.svg in plot._repr_html_()
    assert "Plot" in repr(plot)


def test_models(fitted):
    recognizer = fitted.recognizer_
    model = recognizer.models[0]
    drawn_well(vesk.plot_codebook(recognizer), "Codebook", line=len(recognizer.codebook))
    drawn_well(vesk.plot_codebook([0, 90], y_up=True), "Codebook", line=2)
    drawn_well(vesk.plot_transitions(model), "Transitions", circle=model.num_states)
    drawn_well(vesk.plot_emissions(model, recognizer.codebook), "Emissions",
               circle=model.vocab_size)
    drawn_well(vesk.plot_emissions(model.b), "Emissions", circle=0)
    for call in (lambda: vesk.plot_transitions(np.zeros((2, 3))), lambda: vesk.plot_codebook("x"),
                 lambda: vesk.plot_emissions(model, [1.0])):
        with pytest.raises(ValueError):
            call()


def test_traces(fitted, drawn, tmp_path):
    plot = vesk.plot_traces(drawn.X[:2], ["one & two", "three"])
    drawn_well(plot, "one &amp; two", polyline=2)
    plot.save(tmp_path / "traces.svg")
    assert (tmp_path / "traces.svg").read_text() == plot.svg
    drawn_well(vesk.plot_states(fitted, drawn.X[0]), f"States of {drawn.y[0]}")
    path = fitted.recognizer_.state_path(1, drawn.X[0])[1]
    drawn_well(vesk.plot_states(fitted.recognizer_, drawn.X[0], 1), "States of",
               polyline=len(set(path)))
    with pytest.raises(vesk.InputError):
        vesk.plot_states(fitted, np.zeros((3, 2)), 0)
    with pytest.raises(ValueError, match="names"):
        vesk.plot_traces(drawn.X[:2], ["one"])


def test_evaluations(few):
    quick = vesk.GestureClassifier(discrimination=0, calibrate=False, iterations=1)
    evaluation = vesk.evaluate(few.X, few.y, few.groups, classifier=quick)
    drawn_well(vesk.plot_confusion(evaluation), "Confusion matrix", rect=3 * 4)
    drawn_well(vesk.plot_confusion(evaluation, "templates"), "Confusion matrix")
    drawn_well(vesk.plot_trade_off(evaluation), "template matcher")
    known = vesk.evaluate(few.X, few.y, few.groups, classifier=quick, unknown_gestures=False)
    with pytest.raises(vesk.InputError):
        vesk.plot_trade_off(known)
