"""Trains on all traces of a file (or on drawn ones), stores the model, recognises with it."""

import sys

import vesk

traces = vesk.read_traces(sys.argv[1]) if len(sys.argv) > 1 else vesk.generate_traces()
model = vesk.GestureClassifier().fit(traces.X, traces.y, groups=traces.groups)
model.save("gestures.model")
again = vesk.GestureClassifier.load("gestures.model")
print(again.predict(traces.X[:3]), f"{again.score(traces.X, traces.y):.3f}")
