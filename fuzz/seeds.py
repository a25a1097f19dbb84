#!/usr/bin/env python3
"""Makes inputs for the fuzz targets to begin with.

usage: seeds.py FOLDER

Writes FOLDER/<target>/<number>: what writers write, and what tends to go wrong: truncation, counts
that promise too much or too little, odd spellings of numbers, other line ends, bytes that no text
has. The same files every time.
"""

import pathlib
import random
import sys

ODD_NUMBERS = ["inf", "-inf", "nan", "NaN(1)", "1e999", "-1e999", "1e-999", "5e-324", "0x1F", "1,5",
               "1.5.5", "-0", "+3", ".5", "5.", "1e", "--1", "-5", "4294967295", "2147483648", "x"]
COUNTS = [-1, 0, 1, 2, 46340, 46341, 65536, 1 << 20, (1 << 20) + 1, (1 << 31) - 1, 1 << 31,
          (1 << 32) - 1, 1 << 32]
MARK = b"\xef\xbb\xbf"


def numbers(count, step=0.125):
    return " ".join(f"{step * (i % 8):g}" for i in range(count))


def tables(N, M):
    return "\n".join(numbers(count) for count in (N, N * N, N * M))


def general(N=2, M=3, D=1, name="gesture"):
    return f"{name}\n{N} {M} {D}\n{tables(max(N, 0) % 8, max(M, 0) % 8)}\n{numbers(3)}\n"


def left_right(N=3, M=2, delta=1, name="circle"):
    values = tables(max(N, 0) % 8, max(M, 0) % 8)
    return f"{name}\n{N} {M} 1 {delta}\n{numbers(max(M, 0) % 8, 1)}\n{values}\n{numbers(2)}\n"


def gesture(name, N, M, delta=1):
    return f"{name}\n{N} {M} 1 {delta}\n{tables(max(N, 0) % 8, max(M, 0) % 8)}\n\n"


def recognition(entries=4, N=3, M=4, gestures=(("circle", 1, 4), ("line", 2, 4))):
    head = f"1 0 {entries}\n{numbers(max(entries, 0) % 8, 90)}\n\n"
    combined = f"set\n{N} {M} 1 0.9\n{tables(max(N, 0) % 8, max(M, 0) % 8)}\n{numbers(M % 8, 1)}\n\n"
    return head + combined + "".join(gesture(*g) for g in gestures)


def sound_recognition():
    """A model that the kit accepts: rows that sum to one, a codebook entry a symbol."""
    return ("0 0 2\n0 180\n\nset\n2 2 1 0.5\n0.5 0.5\n0.5 0.5 0.5 0.5\n0.5 0.5 0.25 0.75\n0 1\n\n"
            "left\n1 2 1 0\n1\n1\n0.5 0.5\n\nright\n1 2 1 1\n1\n1\n0.25 0.75\n\n")


def damaged(text):
    """The text, cut, with odd tokens, and in other encodings."""
    data = text.encode()
    yield data
    for part in range(1, 8):
        yield data[:len(data) * part // 8]
    words = text.split(" ")
    for i, odd in enumerate(ODD_NUMBERS):
        at = (i * 7 + 1) % len(words)
        yield " ".join(words[:at] + [odd] + words[at + 1:]).encode()
    yield data.replace(b"\n", b"\r\n")
    yield MARK + data
    yield data.replace(b" ", b"\0 ", 1)
    yield data + data
    yield b"w" * 5000 + data
    yield text.encode("utf-16")


def model_seeds(make, sizes):
    yield b""
    yield b"\n"
    yield from damaged(make())
    for arguments in sizes:
        yield make(*arguments).encode()


def pairs():
    for one in COUNTS:
        yield one, 2
        yield 2, one
        yield one, one


def codebook_seeds():
    yield b""
    yield b"\n\n\n"
    yield from damaged("0\n90 degrees\n180\n270 ")
    yield "\n".join(ODD_NUMBERS).encode()


def json_seeds():
    line = '{"gesture": "circle", "user": "ann", "points": [[0, 1], [2.5, -3e2], [4, 5, 6]]}\n'
    yield b""
    yield from damaged(line)
    for points in ("[]", "[[]]", "[[1]]", "[1, 2]", "null", "[[1e999, 0]]", "{}", '"x"',
                   "[[[1, 2]]]", "[[1, 2], [3, null]]"):
        yield ('{"points": %s}\n' % points).encode()
    yield b'{"other": ' + b"[" * 300 + b"]" * 300 + b', "points": [[1, 2]]}'
    yield b'{"points": [[1, 2]], "points": [[3, 4]], "user": "\\ud800"}'
    yield b'{"gesture": "\xff", "points": [[1, 2]]}'


def csv_seeds():
    table = "gesture,user,trace,x,y\ncircle,ann,1,10.5,20\ncircle,ann,1,11,21.5\nline,bob,2,1,1\n"
    yield b""
    yield from damaged(table.replace(",", " ").replace(" ", ", "))
    yield table.encode()
    for separator in ";\t":
        yield table.replace(",", separator).encode()
    yield b"1,2\n3,4\n"
    yield b'x,y,gesture\n1,2,"a ""b"", c"\n'
    yield b'x,y\n1,"2\n'
    yield b"x,y,x\n1,2,3\n"
    yield b"trace,x,y\n1,1,1\n2,2,2\n1,3,3\n"


def xml_seeds():
    log = ('<?xml version="1.0"?>\n<Gesture Name="circle07" Subject="3">\n'
           '<Point X="1" Y="2" T="0"/>\n<Point X="1.5" Y="2e2"/>\n</Gesture>\n')
    yield b""
    yield from damaged(log)
    yield b"<a><Gesture/><b><Gesture Name='x'><Stroke><Point X='1' Y='2'/></Stroke></Gesture></b></a>"
    yield b"<Gesture><Stroke/><Stroke/></Gesture>"
    yield b"<a>" * 500 + b"</a>" * 500
    yield b"<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>"
    yield b"<Gesture Name='&#0;&#x110000;'/>"


def random_seeds(seed):
    source = random.Random(seed)
    for length in (0, 1, 4, 16, 64, 256, 1024):
        for kind in range(4):
            # Values below ten are special; most parameters are shares.
            most = (source.randrange(0 if source.random() < 0.1 else 11, 256)
                    for _ in range(length))
            yield bytes([kind]) + bytes(most)


def recognitions():
    for one, other in pairs():
        yield 4, one, other
        yield one, 3, 4
        yield 4, 3, 4, (("circle", one, other), ("line", 2, 4))


def all_seeds():
    yield "general", model_seeds(general, [*pairs(), (2, 2, -1), (2, 2, 3), (2, 2, 1 << 30)])
    yield "left_right", model_seeds(left_right, [*pairs(), (3, 2, -5), (3, 2, (1 << 31) - 1)])
    yield "recognition", [*model_seeds(recognition, recognitions()), sound_recognition().encode()]
    yield "codebook", codebook_seeds()
    yield "json_lines", json_seeds()
    yield "csv", csv_seeds()
    yield "xml", xml_seeds()
    yield "model_check", [*model_seeds(recognition, []), *damaged(sound_recognition())]
    yield "differential", random_seeds(1)
    yield "round_trip", random_seeds(2)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    for target, inputs in all_seeds():
        folder = pathlib.Path(sys.argv[1]) / target
        folder.mkdir(parents=True, exist_ok=True)
        for number, data in enumerate(inputs):
            (folder / f"{number:03}").write_bytes(data)


if __name__ == "__main__":
    main()
