"""The combined model, from parts and files, and the host's recogniser."""

import copy
import pickle

import numpy as np
import pytest

import vesk


def gesture(name, symbols):
    model = vesk.LeftRightHMM(2, 4, 1)
    model.name = name
    model.pi = [1, 0]
    model.a = [[0.5, 0.5], [0, 1]]
    model.b = [np.eye(4)[s] * 0.96 + 0.01 for s in symbols]
    return model


def named_hmm():
    model = vesk.HMM(1, 1)
    model.name = "general"
    return model


def built(p=0.5):
    model = vesk.RecognitionModelHMM([gesture("up", (0, 1)), gesture("down", (2, 3))], p)
    assert model.initialize()
    model.name = "pair"
    return model


def test_composes_and_recognises():
    model = built()
    assert (model.num_states, model.vocab_size) == (4, 4)
    assert model.a.sum(axis=1) == pytest.approx(np.ones(4))
    verdict = model.evaluate([0, 0, 1, 1, 1])
    assert verdict.long_enough and verdict.winner == 0
    assert verdict.gestures[0].accepted and not verdict.gestures[1].accepted
    assert model.forward_prob([0, 0, 1, 1, 1]) * 0.5 == verdict.threshold
    assert model.evaluate([0]).winner == -1
    assert "winner 0" in repr(verdict)


def test_check_prints_and_evaluate_does_not(capfd):
    model = built()
    model.evaluate([0, 1, 1])
    assert capfd.readouterr().out == ""
    assert model.check([0, 1, 1]) == "up"
    assert capfd.readouterr().out.startswith("threshold = ")


def test_refuses_what_the_library_leaves_to_the_caller():
    model = built()
    for call in (model.evaluate, model.check, model.forward_prob):
        with pytest.raises(ValueError, match="found the symbol 4, expected 0 to 3"):
            call([0, 4])
    for p in (-0.1, 1.5, float("nan")):
        with pytest.raises(ValueError):
            model.model_transition_prob = p
    with pytest.raises(ValueError):
        vesk.RecognitionModelHMM([gesture("up", (0, 1)), vesk.LeftRightHMM(2, 3, 1)])
    with pytest.raises(TypeError):
        vesk.RecognitionModelHMM([None])
    with pytest.raises(ValueError):
        model.stage([1.0], np.eye(2), np.ones((1, 4)))


def test_holds_copies():
    part = gesture("up", (0, 1))
    model = vesk.RecognitionModelHMM([part, gesture("down", (2, 3))], 0.5)
    part.b = np.zeros((2, 4))
    model.initialize()
    assert model.evaluate([0, 1, 1]).winner == 0
    model.gestures[0].b = np.zeros((2, 4))
    assert model.evaluate([0, 1, 1]).winner == 0


def test_staged_parameters():
    model = built()
    staged = vesk.RecognitionModelHMM(model.gestures, 0.5)
    staged.stage(model.pi, model.a, model.b, model.vocab)
    assert staged.create_recognition_hmm_from_parameters()
    assert staged.from_parameters and not staged.initialize()
    assert staged.evaluate([0, 1, 1]).threshold == model.evaluate([0, 1, 1]).threshold


def test_pickles_keep_every_bit():
    model = built(1 / 3)
    model.codebook = [0.1, 1 / 3]
    for twin in (pickle.loads(pickle.dumps(model)), copy.deepcopy(model), copy.copy(model)):
        assert twin.a.tobytes() == model.a.tobytes()
        assert twin.model_transition_prob == 1 / 3
        assert twin.codebook.tobytes() == model.codebook.tobytes()
        assert twin.recognition_hmm.b.tobytes() == model.recognition_hmm.b.tobytes()
        assert twin.evaluate([2, 3, 3]).threshold == model.evaluate([2, 3, 3]).threshold


def test_files(tmp_path, capfd):
    model = built()
    model.codebook = [0.0, 90.0, 180.0, 270.0]
    model.save(tmp_path / "pair.model")
    model.save_node(tmp_path / "pair.wrl")
    twin = vesk.RecognitionModelHMM()
    assert twin.read(tmp_path / "pair.model") == ["up", "down"]
    assert capfd.readouterr().out == ""
    assert [g.name for g in twin.gestures] == ["up", "down"]
    assert twin.evaluate([0, 1, 1]).winner == 0
    announcing = vesk.RecognitionModelHMM()
    announcing.load(tmp_path / "pair.model")
    assert "up" in capfd.readouterr().out
    with pytest.raises(OSError):
        twin.read(tmp_path / "missing")
    with pytest.raises(ValueError, match="initialize"):
        named = vesk.RecognitionModelHMM()
        named.name = "empty"
        named.save(tmp_path / "x")
    with pytest.raises(TypeError):
        general = vesk.RecognitionModelHMM([named_hmm()], 0.5)
        general.name = "general"
        general.save(tmp_path / "x")


def test_a_file_that_declares_too_much_is_named(tmp_path):
    built().save(tmp_path / "a.model")
    text = (tmp_path / "a.model").read_text().replace("\n4 4 1 0.5\n", "\n40000 40000 1 0.5\n")
    (tmp_path / "huge.model").write_text(text)
    with pytest.raises(MemoryError, match="huge.model: declares more"):
        vesk.RecognitionModelHMM().read(tmp_path / "huge.model")


def test_repr_and_dump():
    assert repr(built()) == "<RecognitionModelHMM 'pair': 2 gesture models, 4 states>"
    assert repr(vesk.RecognitionModelHMM()).endswith("not built>")
    assert "numStates: 4" in built().dump()


def test_recognizer_reads_strictly(tmp_path, fitted, drawn):
    fitted.save(tmp_path / "a.model")
    text = (tmp_path / "a.model").read_text()
    recognizer = vesk.Recognizer.load(tmp_path / "a.model")
    assert recognizer.text() == text
    twin = pickle.loads(pickle.dumps(recognizer))
    assert twin.text() == text
    assert twin.threshold_model.a.tobytes() == recognizer.threshold_model.a.tobytes()
    result = recognizer.recognize(drawn.X[:1])[0]
    assert result.gesture == recognizer.verdicts(drawn.X[:1])[0]
    assert result.scores[0][1] >= result.scores[1][1]
    assert "Result" in repr(result) and "Recognizer" in repr(recognizer)
    (tmp_path / "bad.model").write_text(text[:-100])
    with pytest.raises(vesk.InputError, match="bad.model:"):
        vesk.Recognizer.load(tmp_path / "bad.model")
    with pytest.raises(vesk.OutputError):
        recognizer.save(tmp_path / "no" / "a.model")


def test_recognizer_names_what_it_refuses(fitted, drawn):
    recognizer = fitted.recognizer_
    bad = np.array([[0.0, 0.0], [1.0, np.nan]])
    with pytest.raises(vesk.InputError, match=r"X\[1\]: found nan as points\[1\]\[1\]"):
        recognizer.verdicts([drawn.X[0], bad])
    with pytest.raises(ValueError, match=r"X\[0\]: found shape \(2, 3\), expected \(any, 2\)"):
        recognizer.verdicts([np.zeros((2, 3))])
    assert recognizer.recognize([np.zeros((3, 2))])[0].rejection == "too short"
    assert recognizer.verdicts([]) == []
    with pytest.raises(ValueError):
        recognizer.state_path(10_000, drawn.X[0])
