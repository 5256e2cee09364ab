"""The script side of the tests' peer (tests/peer.h): arrays in and out of the exchange folder,
and the loop over its case lines.

An array NAME is NAME.bin, elements x fastest (Fortran order), with NAME.shape holding one line
"dtype n0 n1 ...". Complex integers ("cint16", "cuint8", ...) have no NumPy type and load as
complex128.
"""
import sys

import numpy as np


def load(folder, name):
    words = open(f"{folder}/{name}.shape").read().split()
    dtype, shape = words[0], tuple(int(v) for v in words[1:])
    if dtype.startswith("c") and not dtype.startswith("complex"):
        parts = np.fromfile(f"{folder}/{name}.bin", dtype=dtype[1:])
        parts = parts.reshape((2,) + shape, order="F")
        return (parts[0] + 1j * parts[1]).astype(np.complex128)
    return np.fromfile(f"{folder}/{name}.bin", dtype=dtype).reshape(shape, order="F")


def save(folder, name, array):
    array = np.asarray(array)
    if array.dtype.kind not in "iufc":
        raise TypeError(f"{name}: no exchange for {array.dtype}")
    array.reshape(-1, order="F").tofile(f"{folder}/{name}.bin")
    with open(f"{folder}/{name}.shape", "w") as f:
        f.write(" ".join([array.dtype.name] + [str(v) for v in array.shape]) + "\n")


class Inputs(dict):
    """The arrays of the folder by name, each read when first asked for."""

    def __init__(self, folder):
        super().__init__()
        self.folder = folder

    def __missing__(self, name):
        self[name] = load(self.folder, name)
        return self[name]


def run(compute):
    """compute(arrays, op, args) for each line "id op args..." of cases.txt, saved as id."""
    folder = sys.argv[1]
    arrays = Inputs(folder)
    for line in open(f"{folder}/cases.txt"):
        fields = line.split()
        if not fields:
            continue
        try:
            out = compute(arrays, fields[1], fields[2:])
        except Exception as e:
            raise RuntimeError(f"case {line.strip()}") from e
        save(folder, fields[0], out)
