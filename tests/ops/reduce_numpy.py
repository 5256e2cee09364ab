"""Computes the reference results of the reductions with NumPy.

Usage: reduce_numpy.py DIR, with the array a and the case lines "id op axis" in DIR (see
peer.py). Each result is complex128 when a is complex, else float64, with the reduced axis
kept as 1.
"""
import numpy as np

import peer

AXES = "xyzt"


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


def reference(arrays, op, args):
    a = arrays["a"]
    with np.errstate(over="ignore"):
        out = np.asarray(compute(a, op, AXES.index(args[0])))
    return out.astype(np.complex128 if np.iscomplexobj(a) else np.float64)


if __name__ == "__main__":
    peer.run(reference)
