"""An independent reader of workspace files: parses FOLDER/ws.zrk by the file's layout and
compares every array in it with the array of the same name (blanks as underscores) that the
test put into FOLDER. Prints one line per array; exits non-zero on any difference.

Layout: a class line "zarnik win99", then "key= value" lines up to "end"; "history= N" is
followed by N lines. Each data block is view_data= NAME, typen= LEN TYPE, res6= six sizes,
mm6= six steps, data= and a line break, then the raw bytes, x fastest, native order.
"""
import sys

import numpy as np

import peer

COMPONENT = {"i1": "int8", "i2": "int16", "i4": "int32", "i8": "int64",
             "n1": "uint8", "n2": "uint16", "n4": "uint32", "n8": "uint64",
             "r4": "float32", "r8": "float64"}


def main(folder):
    raw = open(f"{folder}/ws.zrk", "rb").read()
    pos = 0

    def line():
        nonlocal pos
        end = raw.index(b"\n", pos)
        text = raw[pos:end].decode()
        pos = end + 1
        return text

    assert line() == "zarnik win99"
    while True:
        text = line()
        if text.strip() == "end":
            break
        key, _, value = text.partition(" ")
        if key == "history=":
            for _ in range(int(value)):
                line()
    checked = 0
    while pos < len(raw):
        key, _, name = line().partition(" ")
        if key != "view_data=":
            break  # display blocks follow the data
        key, _, rest = line().partition(" ")
        assert key == "typen="
        length, _, type_name = rest.partition(" ")
        assert len(type_name) == int(length)
        sizes = [int(v) for v in line().split()[1:]]
        steps = [float(v) for v in line().split()[1:]]
        assert line() == "data="
        complex_ = type_name.startswith("complex ")
        component = np.dtype(COMPONENT[type_name.split()[-1]])
        count = int(np.prod(sizes)) * (2 if complex_ else 1)
        values = np.frombuffer(raw, dtype=component, count=count, offset=pos)
        pos += count * component.itemsize
        if complex_:
            values = values[0::2].astype(np.complex128) + 1j * values[1::2].astype(np.complex128)
        got = values.reshape([s for s in sizes], order="F")
        want = peer.load(folder, name.replace(" ", "_"))
        want = want.reshape(want.shape + (1,) * (6 - want.ndim))
        if got.shape != want.shape or not np.array_equal(got, want, equal_nan=True):
            sys.exit(f"{name}: {type_name} {got.shape} differs from {want.shape}")
        if len(steps) != 6:
            sys.exit(f"{name}: {len(steps)} steps")
        print(f"{name} {type_name} {' '.join(map(str, sizes))}")
        checked += 1
    print(f"checked {checked}")


main(sys.argv[1])
