"""Trains on a Dask cluster: that of the scheduler named, or two local processes.

    cluster.py [tcp://SCHEDULER:8786 [TRACES]]
"""

import sys

from distributed import Client
from joblib import parallel_backend

import vesk


def main():
    arguments = sys.argv[1:]
    traces = vesk.read_traces(arguments[1]) if len(arguments) > 1 else vesk.generate_traces()
    where = {"address": arguments[0]} if arguments else {
        "n_workers": 2, "threads_per_worker": 1, "dashboard_address": None, "host": "127.0.0.1"}
    with Client(**where):
        with parallel_backend("dask"):
            model = vesk.GestureClassifier().fit(traces.X, traces.y, groups=traces.groups)
    alone = vesk.GestureClassifier().fit(traces.X, traces.y, groups=traces.groups)
    print(model.recognizer_, "equal:", model.recognizer_.text() == alone.recognizer_.text())


if __name__ == "__main__":
    main()
