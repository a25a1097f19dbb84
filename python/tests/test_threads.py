"""Threads on one object: no lock held while the engine works, no race with changes."""

import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np

import vesk


def test_threads_share_a_classifier(fitted, drawn):
    alone = fitted.predict(drawn.X).tolist()
    with ThreadPoolExecutor(4) as pool:
        for answers in pool.map(lambda _: fitted.predict(drawn.X).tolist(), range(8)):
            assert answers == alone


def test_other_threads_go_on_meanwhile():
    model = vesk.HMM(400, 4)
    model.pi, model.a, model.b = np.full(400, 1 / 400), np.full((400, 400), 1 / 400), np.full((400, 4), 0.25)
    symbols = np.zeros(50_000, dtype=int)
    ticks = []
    done = threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.perf_counter())
            time.sleep(0.001)

    other = threading.Thread(target=tick)
    other.start()
    begin = time.perf_counter()
    model.forward_probability(symbols)
    end = time.perf_counter()
    done.set()
    other.join()
    assert end - begin > 0.02
    # With the lock held there would be none inside.
    assert sum(begin + 0.005 < t < end - 0.005 for t in ticks) > 3


def test_a_model_may_change_while_others_ask_it():
    model = vesk.HMM(3, 2)
    fair = (np.full(3, 1 / 3), np.full((3, 3), 1 / 3), np.full((3, 2), 0.5))
    model.pi, model.a, model.b = fair
    allowed = {model.forward_probability([0, 1, 0])}
    model.b = np.full((3, 2), 0.25)
    allowed.add(model.forward_probability([0, 1, 0]))
    stop = time.perf_counter() + 0.3

    def change():
        while time.perf_counter() < stop:
            model.b = np.full((3, 2), 0.5)
            model.b = np.full((3, 2), 0.25)

    def ask():
        found = set()
        while time.perf_counter() < stop:
            found.add(model.forward_probability([0, 1, 0]))
        return found

    with ThreadPoolExecutor(4) as pool:
        pool.submit(change)
        for found in [pool.submit(ask) for _ in range(3)]:
            assert found.result() <= allowed


def test_what_prints_does_so_from_several_threads(capfd):
    model = vesk.HMM(60, 60)  # long enough for two to be at it at once
    text = model.dump()
    with ThreadPoolExecutor(4) as pool:
        list(pool.map(lambda _: model.print(), range(50)))
        assert set(pool.map(lambda _: model.dump(), range(50))) == {text}
    assert capfd.readouterr().out == text * 50
