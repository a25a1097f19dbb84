"""Prints the table of ratios: table.py <results of Google Benchmark, JSON>."""

import re
import sys

from results import medians

# What a row is to reach: how many times as fast as the peer and the plain version.
GOALS = [
    (r"forward left-right N=8$", {"peer": 4}),
    (r"forward dense N=64$", {"peer": 7}),
    (r"forward dense N=256$", {"peer": 6}),
    (r"train left-right N=8 ", {"peer": 3, "plain": 8}),
    (r"train left-right N=16 ", {"peer": 4}),
    (r"train left-right N=64 ", {"peer": 2}),
    (r"train dense N=64 ", {"peer": 8}),
    (r"viterbi N=8 ", {"peer": 3}),
    (r"viterbi N=64 ", {"peer": 12}),
    (r"scaled N=8 ", {"peer": 3}),
    (r"check 16 gestures", {"plain": 20}),
    (r"check 62 gestures", {"plain": 20}),
    (r"check 200 gestures", {"plain": 30}),
    (r"initialize ", {"plain": 1}),
    (r"(load|save) ", {"plain": 1}),
    (r".*baumWelch", {"plain": 5}),
    (r"classify ", {"plain": 1 / 1.5}),
    (r"learn ", {"plain": 10}),
    (r"recognise ", {"plain": 1 / 1.3}),
]


CONTESTANTS = ["ours", "plain", "peer", "limit"]


def rows(path):
    """{row: {contestant: median time in microseconds}}."""
    table = {}
    for name, time in medians(path).items():
        row, contestant = name.rsplit("/", 1)
        table.setdefault(row, {})[contestant] = time
    return table


def goal_of(row):
    return next((goals for pattern, goals in GOALS if re.match(pattern, row)), {})


def main():
    heads = [f"{name}/us" for name in CONTESTANTS]
    heads += ["plain/ours", "goal", "peer/ours", "goal"]
    print(f"{'':44}" + "".join(f"{head:>12}" for head in heads))
    for row, times in rows(sys.argv[1]).items():
        cells = [f"{times[name]:.2f}" if name in times else "" for name in CONTESTANTS]
        for name in ("plain", "peer"):
            goal = goal_of(row).get(name)
            cells.append(f"{times[name] / times['ours']:.2f}" if name in times else "")
            cells.append(f"{goal:.3g}" if goal else "")
        print(f"{row:44}" + "".join(f"{cell:>12}" for cell in cells))


main()
