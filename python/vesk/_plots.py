"""Plots for notebooks: the engine's SVG in an object that shows itself."""

from __future__ import annotations

import os
from collections.abc import Sequence
from typing import Any

from vesk import _vesk
from vesk._classifier import GestureClassifier


class Plot:
    """One plot, as the text of an <svg> element; notebooks show it, light or dark."""

    def __init__(self, svg: str) -> None:
        self.svg = svg

    def _repr_svg_(self) -> str:
        return self.svg

    def _repr_html_(self) -> str:
        return f"<style>{_vesk.plot_colours()}</style>{self.svg}"

    def __repr__(self) -> str:
        return f"<Plot: {len(self.svg)} characters of SVG>"

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the SVG."""
        with open(path, "w", encoding="utf-8") as file:
            file.write(self.svg)


def plot_traces(traces: Any, names: Sequence[str] | None = None, *, y_up: bool = False) -> Plot:
    """Traces over one another; a ring marks where each begins."""
    listed = list(traces)
    titles = list(names) if names is not None else [f"trace {i}" for i in range(len(listed))]
    return Plot(_vesk.strokes_svg("Traces", listed, titles, y_up))


def plot_states(
    recognizer: _vesk.Recognizer | GestureClassifier,
    trace: Any,
    model: int | None = None,
    *,
    y_up: bool = False,
) -> Plot:
    """A trace coloured by the states of its likeliest path through a gesture model.

    `model`: the index among `recognizer.models`; None: that which explains the trace best.
    InputError where the trace has no such path.
    """
    if isinstance(recognizer, GestureClassifier):
        engine: _vesk.Recognizer = recognizer.recognizer_
    else:
        engine = recognizer
    models = engine.models
    if model is None:
        symbols = engine.symbols(trace)
        likelihoods = [m.log_likelihood(symbols) for m in models]
        model = likelihoods.index(max(likelihoods))
    path = engine.state_path(model, trace)
    if path is None:
        raise _vesk.InputError("trace: found no path through the model, expected a longer trace")
    points, states, _ = path
    title = f"States of {models[model].name}"
    return Plot(_vesk.state_stroke_svg(title, points, states, models[model].num_states, y_up))


def plot_codebook(directions: Any, *, y_up: bool = False) -> Plot:
    """Directions in degrees, (M,), as spokes; also takes what has a `codebook`."""
    return Plot(
        _vesk.codebook_svg("Codebook", getattr(directions, "codebook", directions), y_up)
    )


def plot_transitions(model: Any) -> Plot:
    """The states of a model, or of (N, N) transitions, and arrows as wide as they are likely."""
    return Plot(_vesk.transitions_svg("Transitions", getattr(model, "a", model)))


def plot_emissions(model: Any, directions: Any = None, *, y_up: bool = False) -> Plot:
    """The emissions of a model, or (N, M) of them; `directions` in degrees mark the columns."""
    return Plot(_vesk.emissions_svg("Emissions", getattr(model, "b", model), directions, y_up))


def plot_confusion(evaluation: _vesk.Evaluation, method: str = "models") -> Plot:
    """How often each gesture got each answer, of the "models" or the "templates"."""
    return Plot(evaluation.confusion_svg(method))


def plot_trade_off(evaluation: _vesk.Evaluation) -> Plot:
    """Unknown gestures accepted over known ones rejected; InputError where none were unknown."""
    svg = evaluation.trade_off_svg()
    if not svg:
        raise _vesk.InputError("found no trace that was taken for unknown, expected some")
    return Plot(svg)
