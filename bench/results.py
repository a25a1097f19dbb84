"""Reads what Google Benchmark measured."""

import json
import re
import statistics

UNITS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}


def medians(path):
    """{name: median time in microseconds}, in the order of registration."""
    times = {}
    with open(path) as file:
        benchmarks = json.load(file)["benchmarks"]
    for entry in sorted(benchmarks, key=lambda entry: entry["family_index"]):
        if entry["run_type"] != "iteration":
            continue
        name = re.sub(r"/(iterations|repeats):\d+", "", entry["name"])
        times.setdefault(name, []).append(entry["cpu_time"] * UNITS[entry["time_unit"]])
    return {name: statistics.median(all_times) for name, all_times in times.items()}
