"""Computes the reference results of the reductions with NumPy.

Usage: reduce_numpy.py DIR DTYPE. DIR holds a.bin (DTYPE, Fortran order), its shape in a.shape,
and cases.txt with one case a line: "id op axis". For each case this writes DIR/id.bin
(complex128 when DTYPE is complex, else float64; Fortran order) and DIR/id.shape, with the
reduced axis kept as 1.
"""
import sys

import numpy as np

AXES = "xyzt"


def load(folder, dtype):
    shape = tuple(int(v) for v in open(f"{folder}/a.shape").read().split())
    return np.fromfile(f"{folder}/a.bin", dtype=dtype).reshape(shape, order="F")


def per_part(a, f):
    """f applied to i and q separately, as the reductions of complex data do."""
    if np.iscomplexobj(a):
        return f(a.real) + 1j * f(a.imag)
    return f(a)


def compute(a, op, axis):
    wide = a.astype(np.complex128 if np.iscomplexobj(a) else np.float64)
    keep = dict(axis=axis, keepdims=True)
    if op == "mean":
        return per_part(wide, lambda x: x.mean(**keep))
    if op == "sd":
        return per_part(wide, lambda x: x.std(ddof=0, **keep))
    if op == "max":
        return wide.real.max(**keep)
    if op == "min":
        return wide.real.min(**keep)
    if op == "maxndx":
        return np.expand_dims(np.argmax(wide.real, axis=axis), axis)
    if op == "minndx":
        return np.expand_dims(np.argmin(wide.real, axis=axis), axis)
    if op == "mip":
        return np.abs(wide).max(**keep)
    if op == "integrate":
        # The running sum stays in the input's type: integers wrap.
        return np.cumsum(a, axis=axis, dtype=a.dtype)
    if op == "proj":
        return np.sum(a, dtype=a.dtype, **keep)
    if op == "sumsqr":
        return (np.abs(wide) ** 2).sum(**keep)
    raise ValueError(op)


def main(folder, dtype):
    a = load(folder, dtype)
    out_type = np.complex128 if np.iscomplexobj(a) else np.float64
    for line in open(f"{folder}/cases.txt"):
        fields = line.split()
        if not fields:
            continue
        with np.errstate(over="ignore"):
            out = np.asarray(compute(a, fields[1], AXES.index(fields[2])))
        out = out.astype(out_type)
        out.reshape(-1, order="F").tofile(f"{folder}/{fields[0]}.bin")
        with open(f"{folder}/{fields[0]}.shape", "w") as f:
            f.write(" ".join(str(v) for v in out.shape))


if __name__ == "__main__":
    main(sys.argv[1], np.dtype(sys.argv[2]))
