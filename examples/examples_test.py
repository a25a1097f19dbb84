#!/usr/bin/env python3
"""Runs the examples and compares what they say with what they should, or with what vesk says."""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent


def run(command, folder, path, given=None):
    environment = {**os.environ, "PATH": f"{path}:{os.environ['PATH']}"}
    done = subprocess.run([str(word) for word in command], cwd=folder, input=given, text=True,
                          capture_output=True, env=environment)
    if done.returncode != 0:
        sys.exit(f"{command[0]}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: found {found!r}, expected {expected!r}")
    print(f"{what}: as expected")


def events(trace):
    """A trace as a device would send it."""
    moves = "".join(f"move {x} {y}\n" for x, y in trace["points"])
    return f"down {trace['gesture']}\n{moves}up\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--vesk", required=True, type=pathlib.Path)
    parser.add_argument("--programs", required=True, type=pathlib.Path)
    arguments = parser.parse_args()
    programs = arguments.programs.resolve()
    vesk_folder = arguments.vesk.resolve().parent

    with tempfile.TemporaryDirectory() as folder:
        def vesk(*words):
            return run(["vesk", *words], folder, vesk_folder)

        said = run([programs / "host_life"], folder, vesk_folder)
        expect("host_life", re.findall("^answer: (.*)$", said, re.MULTILINE),
               ["corner", "zigzag", "rejected"])

        said = run([programs / "kit_life"], folder, vesk_folder)
        expect("kit_life", said.splitlines(),
               ["circle: circle", "star: star", "zigzag: zigzag", "arrow: rejected"])

        drawn = ["--gesture", "circle", "--gesture", "star", "--gesture", "check"]
        vesk("generate", "-o", "own.jsonl", "--users", "1", "--repetitions", "12", *drawn)
        traces = [json.loads(line)
                  for line in pathlib.Path(folder, "own.jsonl").read_text().splitlines()]
        training = [trace for trace in traces if trace["rep"] <= 8]
        shown = [trace for trace in traces if trace["rep"] > 8]

        dot = "down circle\nmove 1 1\nup\n"
        said = run([programs / "live_training", "own.model"], folder, vesk_folder,
                   dot + "".join(map(events, training)))
        expect("live_training", said.splitlines(),
               [f"{name}: 8 traces" for name in ("check", "circle", "star")])

        pathlib.Path(folder, "shown.jsonl").write_text(
            "".join(json.dumps(trace) + "\n" for trace in shown))
        answers = [json.loads(line)["gesture"] or "rejected" for line in
                   vesk("recognize", "-m", "own.model", "shown.jsonl", "--json").splitlines()]
        if sum(answer == trace["gesture"] for answer, trace in zip(answers, shown)) < 9:
            sys.exit(f"the model does not know its own strokes: {answers}")
        said = run([programs / "event_loop", "own.model"], folder, vesk_folder,
                   "".join(map(events, shown)))
        expect("event_loop", [line.split(":")[0] for line in said.splitlines()], answers)

        run([HERE / "scene.sh", folder], folder, vesk_folder)
        scene = pathlib.Path(folder, "recogniser.wrl").read_text()
        expect("scene.sh", re.findall(r'^PROTO (\w+)|modelname "(\w+)', scene, re.MULTILINE),
               [("Gesture", ""), ("RecognitionModel", ""), ("", "circle"), ("", "star")])


if __name__ == "__main__":
    main()
