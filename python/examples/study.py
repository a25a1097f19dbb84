"""Leaves each user out in turn: the hidden Markov models and the template matcher side by side.

    study.py [TRACES]
"""

import sys

import numpy as np
from sklearn.model_selection import LeaveOneGroupOut

import vesk


def study(traces):
    """Per user (name, traces, and shares of models and templates: likeliest right, wrong)."""
    rows = []
    for training, test in LeaveOneGroupOut().split(traces.X, traces.y, traces.groups):
        X, y = traces.X[training], traces.y[training]
        asked, right = traces.X[test], traces.y[test]
        model = vesk.GestureClassifier().fit(X, y, groups=traces.groups[training])
        answers = model.predict(asked)
        likeliest = model.classes_[model.decision_function(asked).argmax(axis=1)]
        names = np.array(vesk.TemplateMatcher(X, y).nearest(asked)[0])
        rows.append((traces.groups[test[0]], len(test), np.mean(likeliest == right),
                     np.mean(answers == right), np.mean(answers == model.reject_label_),
                     np.mean(names == right)))
    return rows


def main():
    traces = vesk.read_traces(sys.argv[1]) if len(sys.argv) > 1 else vesk.generate_traces()
    rows = study(traces)
    print(f"{'user':8} {'traces':>6} {'likeliest':>10} {'correct':>8} {'rejected':>9} {'templates':>10}")
    total = sum(row[1] for row in rows)
    mean = [sum(row[1] * row[i] for row in rows) / total for i in range(2, 6)]
    for user, count, *shares in [*rows, ("all", total, *mean)]:
        likeliest, correct, rejected, templates = (f"{100 * share:.2f} %" for share in shares)
        print(f"{user:8} {count:6} {likeliest:>10} {correct:>8} {rejected:>9} {templates:>10}")


if __name__ == "__main__":
    main()
