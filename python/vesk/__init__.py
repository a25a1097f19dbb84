"""Gesture recognition with discrete hidden Markov models.

A trace is an array (P, 2): x and y of P positions in any unit, in the order of time.

`GestureClassifier` is a scikit-learn estimator over lists of traces. `read_traces` reads recorded
ones, `evaluate` and `tune` cross-validate, the `plot_...` functions draw. Below them lie the
engine's own classes: `HMM`, `LeftRightHMM`, `RecognitionModelHMM`, `VectorQuantizer2D`,
`KMeansMotionVec`, `Recognizer`, `TemplateMatcher`.
"""

from vesk._classifier import GestureClassifier
from vesk._evaluation import evaluate, tune
from vesk._plots import (
    Plot,
    plot_codebook,
    plot_confusion,
    plot_emissions,
    plot_states,
    plot_trade_off,
    plot_traces,
    plot_transitions,
)
from vesk._tasks import TaskError
from vesk._traces import TraceList, Traces, generate_traces, read_traces
from vesk._vesk import (
    HMM,
    CodebookTrainingEvent,
    Evaluation,
    GestureScore,
    InputError,
    KMeansMotionVec,
    LeftRightHMM,
    OutputError,
    Recognition,
    RecognitionModelHMM,
    Recognizer,
    Result,
    SegmentationType,
    TemplateMatcher,
    TrainingStep,
    VectorQuantizer2D,
    __version__,
    proximity_filter,
    resample,
    training_options,
)

__all__ = [
    "HMM",
    "CodebookTrainingEvent",
    "Evaluation",
    "GestureClassifier",
    "GestureScore",
    "InputError",
    "KMeansMotionVec",
    "LeftRightHMM",
    "OutputError",
    "Plot",
    "Recognition",
    "RecognitionModelHMM",
    "Recognizer",
    "Result",
    "SegmentationType",
    "TaskError",
    "TemplateMatcher",
    "TraceList",
    "Traces",
    "TrainingStep",
    "VectorQuantizer2D",
    "__version__",
    "evaluate",
    "generate_traces",
    "plot_codebook",
    "plot_confusion",
    "plot_emissions",
    "plot_states",
    "plot_trade_off",
    "plot_traces",
    "plot_transitions",
    "proximity_filter",
    "read_traces",
    "resample",
    "training_options",
    "tune",
]
