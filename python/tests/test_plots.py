"""Plots are the engine's SVG, and show themselves in notebooks."""

import xml.etree.ElementTree as ET

import numpy as np
import pytest

import vesk


def drawn_well(plot, words):
    root = ET.fromstring(plot._repr_svg_())
    assert root.tag == "{http://www.w3.org/2000/svg}svg"
    assert words in plot.svg
    assert plot._repr_html_().startswith("<style>") and plot.svg in plot._repr_html_()
    assert "Plot" in repr(plot)


def test_models(fitted):
    recognizer = fitted.recognizer_
    model = recognizer.models[0]
    drawn_well(vesk.plot_codebook(recognizer), "Codebook")
    drawn_well(vesk.plot_codebook([0, 90], y_up=True), "Codebook")
    drawn_well(vesk.plot_transitions(model), "Transitions")
    drawn_well(vesk.plot_emissions(model, recognizer.codebook), "Emissions")
    drawn_well(vesk.plot_emissions(model.b), "Emissions")
    for call in (lambda: vesk.plot_transitions(np.zeros((2, 3))), lambda: vesk.plot_codebook("x"),
                 lambda: vesk.plot_emissions(model, [1.0])):
        with pytest.raises(ValueError):
            call()


def test_traces(fitted, drawn, tmp_path):
    plot = vesk.plot_traces(drawn.X[:2], ["one & two", "three"])
    drawn_well(plot, "one &amp; two")
    plot.save(tmp_path / "traces.svg")
    assert (tmp_path / "traces.svg").read_text() == plot.svg
    drawn_well(vesk.plot_states(fitted, drawn.X[0]), f"States of {drawn.y[0]}")
    drawn_well(vesk.plot_states(fitted.recognizer_, drawn.X[0], 1), "States of")
    with pytest.raises(vesk.InputError):
        vesk.plot_states(fitted, np.zeros((3, 2)), 0)
    with pytest.raises(ValueError, match="names"):
        vesk.plot_traces(drawn.X[:2], ["one"])


def test_evaluations(few):
    quick = vesk.GestureClassifier(discrimination=0, calibrate=False, iterations=1)
    evaluation = vesk.evaluate(few.X, few.y, few.groups, classifier=quick)
    drawn_well(vesk.plot_confusion(evaluation), "Confusion matrix")
    drawn_well(vesk.plot_confusion(evaluation, "templates"), "Confusion matrix")
    drawn_well(vesk.plot_trade_off(evaluation), "template matcher")
    known = vesk.evaluate(few.X, few.y, few.groups, classifier=quick, unknown_gestures=False)
    with pytest.raises(vesk.InputError):
        vesk.plot_trade_off(known)
