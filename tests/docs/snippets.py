#!/usr/bin/env python3
"""Compiles and runs the snippets of the documentation.

A block marked cpp is a whole program, a block marked sh a script; each runs in a folder of its own
that holds generated traces in traces.jsonl. Other blocks are not run.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def snippets(document):
    text = document.read_text(encoding="utf-8")
    for match in re.finditer(r"^```(cpp|sh)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL):
        line = text.count("\n", 0, match.start()) + 1
        yield f"{document.name}:{line}", match.group(1), match.group(2)


def run(place, command, folder, environment):
    done = subprocess.run(command, cwd=folder, env=environment, text=True, capture_output=True)
    if done.returncode != 0:
        sys.exit(f"{place}: {command[0]} failed\n{done.stdout}{done.stderr}")
    return done.stdout


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--vesk", required=True, type=pathlib.Path)
    parser.add_argument("--compile", required=True, help="command line up to the source")
    parser.add_argument("--link", required=True, help="command line behind the source")
    parser.add_argument("documents", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()

    environment = dict(os.environ)
    environment["PATH"] = f"{arguments.vesk.parent}:{environment['PATH']}"
    count = 0
    for document in arguments.documents:
        for place, language, code in snippets(document):
            with tempfile.TemporaryDirectory() as folder:
                generate = ["vesk", "generate", "-o", "traces.jsonl", "--users", "2"]
                run(place, generate, folder, environment)
                if language == "sh":
                    command = ["bash", "-euo", "pipefail", "-c", code]
                else:
                    pathlib.Path(folder, "snippet.cpp").write_text(code, encoding="utf-8")
                    compiler = arguments.compile.split() + ["snippet.cpp", "-o", "snippet"]
                    run(place, compiler + arguments.link.split(), folder, environment)
                    command = ["./snippet"]
                output = run(place, command, folder, environment)
            if not output.strip():
                sys.exit(f"{place}: says nothing")
            count += 1
            print(f"{place}: {language} runs")
    if count == 0:
        sys.exit("no snippet found")


if __name__ == "__main__":
    main()
