"""What spreading a training costs: work and bytes per task, the scheduler's overhead, wall times.

    cluster.py TRACES [WORKERS...]    (default 1 2 4 8)
"""

import pickle
import sys
import time

import joblib
from distributed import Client, LocalCluster

import vesk
from vesk import _vesk


def measured(tasks):
    """Per task seconds, bytes there, bytes back, and what they returned."""
    rows, results = [], []
    for task in tasks:
        there = len(pickle.dumps(task))
        begin = time.perf_counter()
        results.append(task.run())
        rows.append((time.perf_counter() - begin, there, len(pickle.dumps(results[-1]))))
    return rows, results


def show(what, rows):
    count = len(rows)
    seconds, there, back = (sum(row[i] for row in rows) for i in range(3))
    print(f"{what}: {count} tasks, {seconds / count:.3f} s each, {there / count / 1e3:.0f} kB there, "
          f"{back / count / 1e3:.0f} kB back; {seconds:.2f} s, {(there + back) / 1e6:.1f} MB in all")


def main():
    traces = vesk.read_traces(sys.argv[1])
    workers = [int(n) for n in sys.argv[2:]] or [1, 2, 4, 8]
    begin = time.perf_counter()
    plan = _vesk.TrainingPlan(traces.X, traces.y, traces.groups, {"threads": 1})
    print(f"{len(traces.X)} traces, {plan.gestures} gestures: planned in "
          f"{time.perf_counter() - begin:.2f} s")
    single, trained = measured([plan.gesture_task(g) for g in range(plan.gestures)])
    show("one gesture", single)
    together, parts = measured([plan.tell_apart_task(t, trained) for t in range(plan.trainings)])
    show("telling apart", together)
    begin = time.perf_counter()
    expected = plan.result(parts)[0].text()
    print(f"put together in {time.perf_counter() - begin:.2f} s")

    for count in workers:
        with LocalCluster(n_workers=count, threads_per_worker=1, dashboard_address=None,
                          host="127.0.0.1") as cluster, Client(cluster) as client:
            list(client.map(abs, range(100)))
            begin = time.perf_counter()
            client.gather(client.map(abs, range(1000, 2000)))
            overhead = (time.perf_counter() - begin) / 1000
            with joblib.parallel_backend("dask"):
                begin = time.perf_counter()
                model = vesk.GestureClassifier().fit(traces.X, traces.y, groups=traces.groups)
                seconds = time.perf_counter() - begin
            same = model.recognizer_.text() == expected
            print(f"{count} workers: {seconds:.2f} s, {1e3 * overhead:.1f} ms an empty task, "
                  f"equal: {same}", flush=True)


if __name__ == "__main__":
    main()
