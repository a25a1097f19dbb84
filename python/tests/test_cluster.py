"""Training spread over processes and a cluster: the same bits, whatever happens to workers."""

import contextlib
import pickle
import threading
import time

import numpy as np
import pytest
from joblib import Parallel, delayed, parallel_backend
from sklearn.model_selection import GridSearchCV

import traffic
import vesk
from dask_cluster import Cluster
from vesk import _tasks, _vesk


def estimator(**params):
    return vesk.GestureClassifier(discrimination=8, **params)


def quick(**params):
    return vesk.GestureClassifier(
        **{"calibrate": False, "discrimination": 0, "iterations": 1, "sub_models": 1, **params})


def bits(model):
    return model.recognizer_.text(), model.report_


@pytest.fixture(scope="module")
def expected(drawn):
    """The C++ trainer's model, in one process."""
    return bits(estimator(n_jobs=1).fit(drawn.X, drawn.y, groups=drawn.groups))


def fitted_on(cluster, drawn, **params):
    with cluster.client.as_current(), parallel_backend("dask"):
        return bits(estimator(**params).fit(drawn.X, drawn.y, groups=drawn.groups))


@pytest.mark.parametrize("n_jobs", [2, 8])
def test_processes_make_the_same_model(drawn, expected, n_jobs):
    assert bits(estimator(n_jobs=n_jobs).fit(drawn.X, drawn.y, groups=drawn.groups)) == expected


@pytest.mark.parametrize("users, sub_models", [(None, 2), ("alone", 1)])
def test_tasks_are_the_trainer_taken_to_pieces(few, users, sub_models):
    """Calibration by traces, too, and gestures that only some users drew."""
    groups = None if users is None else np.where(few.y == "star", "u9", few.groups)
    results = []
    for backend, n_jobs in (("sequential", 1), ("threading", 3)):
        with parallel_backend(backend):
            results.append(bits(estimator(n_jobs=n_jobs, sub_models=sub_models).fit(
                few.X, few.y, groups=groups)))
    assert results[0] == results[1]
    assert results[0][1]["calibration_runs"] == 4


def test_tasks_and_results_travel_exactly(few):
    plan = _vesk.TrainingPlan(few.X, few.y, few.groups, {"discrimination": 2})
    task = plan.gesture_task(0)
    twin = pickle.loads(pickle.dumps(task))
    trained = [plan.gesture_task(g).run() for g in range(plan.gestures)]
    assert pickle.dumps(twin.run()) == pickle.dumps(task.run()) == pickle.dumps(trained[0])
    apart = plan.tell_apart_task(0, trained)
    assert pickle.dumps(pickle.loads(pickle.dumps(apart)).run()) == pickle.dumps(apart.run())
    # One gesture's task has its own traces and no other's.
    points = sum(len(x) for x, y in zip(few.X, few.y) if y == task.gesture)
    assert len(pickle.dumps(task)) < 16 * points + 400 * task.traces + 4000
    with pytest.raises(vesk.InputError):
        plan.tell_apart_task(0, trained[:1])
    with pytest.raises(vesk.InputError):
        plan.result([apart.run()])
    with pytest.raises(ValueError):
        plan.gesture_task(99)


@pytest.fixture
def log(capsys):
    begin = time.perf_counter()

    def show(text):
        with capsys.disabled():
            print(f"\n[{time.perf_counter() - begin:5.2f} s] {text}", end="")

    return show


@contextlib.contextmanager
def killing(cluster, what, log):
    """Kills a worker at such a task meanwhile."""
    over = threading.Event()
    killer = threading.Thread(target=cluster.kill_one_at_work, args=(what, log, over))
    killer.start()
    try:
        yield
    finally:
        over.set()
        killer.join()


def test_a_killed_worker_changes_nothing_but_time(drawn, expected, tmp_path, log):
    with Cluster(tmp_path, [0.2, 0.2, 0.2]) as cluster:
        log(f"3 workers over {cluster.client.scheduler.address}, "
            f"{len(set(drawn.y))} gesture tasks and {expected[1]['calibration_runs'] + 1} more")
        with killing(cluster, "train", log):
            found = fitted_on(cluster, drawn)
        left = len(cluster.client.scheduler_info()["workers"])
        log(f"done with {left} workers, equal: {found == expected}\n")
    assert left == 2
    assert found == expected


def test_a_slow_worker_changes_nothing_but_time(drawn, expected, tmp_path):
    with Cluster(tmp_path, [0, 1.0]) as cluster:
        assert fitted_on(cluster, drawn) == expected


def test_a_killed_worker_changes_no_tuning_either(few, tmp_path, log):
    """As `vesk tune` does it, one trial after the other, folds as tasks."""
    def tuned():
        start = quick(discrimination=0, iterations=1, sub_models=1)
        found, trials, evaluation = vesk.tune(
            few.X, few.y, few.groups, classifier=start, rounds=1)
        return found.get_params(), trials, pickle.dumps(evaluation)

    alone = tuned()
    with Cluster(tmp_path, [0.02, 0.02, 0.02]) as cluster, killing(cluster, "evaluate", log):
        with cluster.client.as_current(), parallel_backend("dask"):
            spread = tuned()
        left = len(cluster.client.scheduler_info()["workers"])
        log(f"{len(alone[1])} trials of 3 folds with {left} workers, equal: {spread == alone}\n")
    assert left == 2
    assert spread == alone


def evaluation(drawn):
    """The arguments of one in eight folds."""
    return {"X": drawn.X, "y": drawn.y, "cv": 8, "classifier": quick(),
            "unknown_gestures": False, "templates": False}


def folds(drawn, **params):
    return pickle.dumps(vesk.evaluate(**evaluation(drawn), **params))


def grid(X, y, **params):
    """Scores of two candidates, each in four folds."""
    search = GridSearchCV(quick(reject_label=None), {"states": [4, 6]}, cv=4, refit=False,
                          error_score="raise", **params)
    return search.fit(X, y).cv_results_["mean_test_score"].tolist()


def test_a_cluster_gets_the_traces_of_folds_and_grids_once(drawn, tmp_path):
    size = drawn.X.__sizeof__()
    works = [
        (folds(drawn), lambda: folds(drawn), 3),
        (grid(drawn.X, drawn.y), lambda: grid(drawn.X, drawn.y), 3),
        # One task of the cluster itself.
        (folds(drawn), lambda: pickle.dumps(
            Parallel()([delayed(vesk.evaluate)(**evaluation(drawn))])[0]), 1),
    ]
    with Cluster(tmp_path, [0, 0]) as cluster, cluster.client.as_current():
        def received():
            counts = cluster.client.run(lambda: __import__("traffic").received())
            return sum(counts.values())

        with parallel_backend("dask"):
            for alone, work, copies in works:
                sent, got = traffic.sent(), received()
                assert work() == alone
                # Eight folds or trainings each. Workers get what another has, too.
                assert size < traffic.sent() - sent < 1.7 * size
                assert received() - got < (copies + 0.7) * size


def test_processes_get_the_traces_of_folds_and_grids_once(drawn):
    def written_by(work):
        work()  # starts the processes
        before = traffic.written()
        work()
        return traffic.written() - before

    size = drawn.X.__sizeof__()
    assert size < written_by(lambda: folds(drawn, n_jobs=2)) < 1.7 * size
    # joblib hands over what is larger than a megabyte in a file, whoever asks for it.
    large = vesk.TraceList([vesk.resample(x, 500) for x in drawn.X])
    size = large.__sizeof__()
    assert size < written_by(lambda: grid(large, drawn.y, n_jobs=2)) < 1.2 * size


def test_a_task_that_fails_names_its_gesture(few):
    class Failing:
        def run(self):
            raise OSError("no space left")

    with pytest.raises(_tasks.TaskError, match="train gesture star: OSError: no space left"):
        with _tasks.workers(2) as run:
            run([_tasks.NamedTask("train gesture star", Failing())])


def test_a_task_that_kills_its_workers_names_its_gesture(few, tmp_path):
    with Cluster(tmp_path, [0, 0, 0], dies_of="star", allowed_failures=1) as cluster:
        with pytest.raises(Exception, match="star"):
            fitted_on(cluster, few)
