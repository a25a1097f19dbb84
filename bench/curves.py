"""Draws the curves: curves.py <folder for the figures> <results of Google Benchmark, JSON>."""

import math
import pathlib
import sys
from xml.sax.saxutils import escape

from results import medians

WIDTH, HEIGHT = 640, 400
LEFT, RIGHT, TOP, BOTTOM = 70, 20, 20, 60
COLOURS = ["#1f6feb", "#d1540f", "#2e8b57"]
TITLES = {
    "states": "number of states (one forward pass, T = 40)",
    "length": "length of the sequence",
    "gestures": "number of gestures (T = 40)",
    "sequences": "number of training sequences (T = 40)",
}


def figures(times):
    """{figure: {line: [(x, microseconds), ...]}}."""
    found = {}
    for name, time in times.items():
        figure, line, x = name.removeprefix("curve:").split("/")
        found.setdefault(figure, {}).setdefault(line, []).append((int(x), time))
    return found


def decades(low, high):
    return range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)


def readable(microseconds):
    for unit, size in (("s", 1e6), ("ms", 1e3), ("µs", 1.0)):
        if microseconds >= size:
            return f"{microseconds / size:g} {unit}"
    return f"{microseconds * 1e3:g} ns"


def draw(figure, lines):
    points = [point for line in lines.values() for point in line]
    x_decades = decades(min(x for x, _ in points), max(x for x, _ in points))
    y_decades = decades(min(y for _, y in points), max(y for _, y in points))

    def at(value, span, begin, end):
        share = (math.log10(value) - span[0]) / max(span[-1] - span[0], 1)
        return begin + share * (end - begin)

    def x_at(x):
        return at(x, x_decades, LEFT, WIDTH - RIGHT)

    def y_at(y):
        return at(y, y_decades, HEIGHT - BOTTOM, TOP)

    title = TITLES[figure]
    summary = "; ".join(
        f"{line}: {readable(line_points[0][1])} at {line_points[0][0]}, "
        f"{readable(line_points[-1][1])} at {line_points[-1][0]}"
        for line, line_points in ((line, sorted(all_points)) for line, all_points in lines.items())
    )
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" role="img" '
        f'font-family="sans-serif" font-size="12">',
        f"<title>Time against {escape(title)}</title>",
        f"<desc>{escape(summary)}</desc>",
        f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
    ]
    for decade in x_decades:
        x = x_at(10.0**decade)
        out.append(f'<line x1="{x:.1f}" y1="{TOP}" x2="{x:.1f}" y2="{HEIGHT - BOTTOM}" stroke="#ddd"/>')
        out.append(f'<text x="{x:.1f}" y="{HEIGHT - BOTTOM + 18}" text-anchor="middle">{10**decade}</text>')
    for decade in y_decades:
        y = y_at(10.0**decade)
        out.append(f'<line x1="{LEFT}" y1="{y:.1f}" x2="{WIDTH - RIGHT}" y2="{y:.1f}" stroke="#ddd"/>')
        out.append(f'<text x="{LEFT - 6}" y="{y + 4:.1f}" text-anchor="end">{readable(10.0**decade)}</text>')
    for (line, line_points), colour in zip(lines.items(), COLOURS):
        path = " ".join(f"{x_at(x):.1f},{y_at(y):.1f}" for x, y in sorted(line_points))
        out.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        for x, y in line_points:
            out.append(f'<circle cx="{x_at(x):.1f}" cy="{y_at(y):.1f}" r="3" fill="{colour}"/>')
    for number, (line, colour) in enumerate(zip(lines, COLOURS)):
        y = TOP + 16 + 16 * number
        out.append(f'<text x="{LEFT + 12}" y="{y}" fill="{colour}">{escape(line)}</text>')
    out.append(
        f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - 14}" text-anchor="middle">{escape(title)}</text>'
    )
    out.append("</svg>")
    return "\n".join(out) + "\n"


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for figure, lines in figures(medians(sys.argv[2])).items():
        path = folder / f"scaling-{figure}.svg"
        path.write_text(draw(figure, lines), encoding="utf-8")
        print(path)
        for line, points in lines.items():
            cells = ", ".join(f"{x}: {readable(float(f'{y:.3g}'))}" for x, y in sorted(points))
            print(f"  {line}: {cells}")


main()
