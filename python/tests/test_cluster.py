"""Training spread over processes and a cluster: the same bits, whatever happens to workers."""

import pickle
import threading
import time

import numpy as np
import pytest
from joblib import parallel_backend

import vesk
from dask_cluster import Cluster
from vesk import _tasks, _vesk


def estimator(**params):
    return vesk.GestureClassifier(discrimination=8, **params)


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


def test_a_killed_worker_changes_nothing_but_time(drawn, expected, tmp_path, capsys):
    def log(text):
        with capsys.disabled():
            print(f"\n[{time.perf_counter() - begin:5.2f} s] {text}", end="")

    begin = time.perf_counter()
    with Cluster(tmp_path, [0.2, 0.2, 0.2]) as cluster:
        log(f"3 workers over {cluster.client.scheduler.address}, "
            f"{len(set(drawn.y))} gesture tasks and {expected[1]['calibration_runs'] + 1} more")
        over = threading.Event()
        killer = threading.Thread(target=cluster.kill_one_at_work, args=(log, over))
        killer.start()
        try:
            found = fitted_on(cluster, drawn)
        finally:
            over.set()
            killer.join()
        left = len(cluster.client.scheduler_info()["workers"])
        log(f"done with {left} workers, equal: {found == expected}\n")
        assert left == 2
    assert found == expected


def test_a_slow_worker_changes_nothing_but_time(drawn, expected, tmp_path):
    with Cluster(tmp_path, [0, 1.0]) as cluster:
        assert fitted_on(cluster, drawn) == expected


def test_grids_and_folds_run_on_the_cluster(few, tmp_path):
    from sklearn.model_selection import GridSearchCV

    search = GridSearchCV(estimator(calibrate=False, reject_label=None), {"states": [8, 16]}, cv=2)
    alone = search.fit(few.X, few.y).cv_results_["mean_test_score"].tolist()
    quick = estimator(calibrate=False)
    evaluation = pickle.dumps(vesk.evaluate(few.X, few.y, few.groups, classifier=quick))
    with Cluster(tmp_path, [0, 0]) as cluster, cluster.client.as_current():
        with parallel_backend("dask", scatter=[few.X]):
            assert search.fit(few.X, few.y).cv_results_["mean_test_score"].tolist() == alone
            spread = vesk.evaluate(few.X, few.y, few.groups, classifier=quick)
    assert pickle.dumps(spread) == evaluation


def test_a_task_that_fails_names_its_gesture(few):
    class Failing:
        def run(self):
            raise OSError("no space left")

    with pytest.raises(_tasks.TaskError, match="train gesture star: OSError: no space left"):
        _tasks.run([_tasks.NamedTask("train gesture star", Failing())], 2)


def test_a_task_that_kills_its_workers_names_its_gesture(few, tmp_path):
    with Cluster(tmp_path, [0, 0, 0], dies_of="star", allowed_failures=1) as cluster:
        with pytest.raises(Exception, match="star"):
            fitted_on(cluster, few)
