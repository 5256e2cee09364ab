"""Reference results of the transforms, data windows, filter kernels and interp, from NumPy
and SciPy.

Usage: transform_check.py DIR, with the inputs and the case lines "id op args..." in DIR (see
peer.py). Inputs are taken as complex64; each result is complex64.
"""
import numpy as np
from scipy.signal import windows

import peer

AXES = "xyztuv"
WINDOWS = {"bart": windows.bartlett, "black": windows.blackman, "hann": windows.hann,
           "hamm": windows.hamming}
F32 = np.float32


def along(v, axis, ndim):
    shape = [1] * ndim
    shape[axis] = len(v)
    return np.asarray(v).reshape(shape)


def next_pow2(n):
    p = 1
    while p < n:
        p *= 2
    return p


def chop_signs(n):
    return np.where(np.arange(n) % 2 == 0, 1.0, -1.0)


def transform(a, axis, size, left, inverse, pre, chop_after):
    widths = [(0, 0)] * a.ndim
    widths[axis] = (left, size - a.shape[axis] - left)
    x = np.pad(a.astype(np.complex128), widths)
    if pre is not None:
        x = x * along(pre, axis, a.ndim)
    y = np.fft.ifft(x, axis=axis) * size if inverse else np.fft.fft(x, axis=axis)
    if chop_after:
        y = y * along(chop_signs(size), axis, a.ndim)
    return y


def ft(a, dirs, chopb, inverse, chopa, padded):
    for d in sorted(dirs, key=AXES.index):
        axis = AXES.index(d)
        n = a.shape[axis]
        size = next_pow2(n) if padded else n
        pre = chop_signs(size) if chopb else None
        a = transform(a, axis, size, (size - n) // 2, inverse, pre, chopa)
    return a


def homodyne(size, w, rising, kind):
    """The weights written out from their definition: 2 on the acquired side, a falling
    ramp over the symmetric part of width w, 0 beyond."""
    fill, tail = (2.0, 0.0) if rising else (0.0, 2.0)
    weights = np.full(size, fill)
    lo = (size - w) // 2
    j = np.arange(w, dtype=float) if rising else w - 1 - np.arange(w, dtype=float)
    x = j * np.pi / max(w, 1)
    ramp = {1: 2 - 2 * j / max(w, 1), 2: 0.16 * np.cos(2 * x) + (np.cos(x) + 0.84),
            3: 0.92 * np.cos(x) + 1.08, 4: np.cos(x) + 1.0}.get(kind)
    if ramp is None:
        ramp = np.full(w, weights[lo - 1] if lo > 0 else fill)
    weights[lo:lo + w] = ramp
    if size - lo < size:
        weights[size - lo:] = tail
    return weights


def pnft(a, d, center, kind, options):
    axis = AXES.index(d)
    n = a.shape[axis]
    c = center
    overlap = 0 if c == 0 else (2 * (n - c) if c > n // 2 else 2 * c)
    if options & 4:
        size = next_pow2(2 * n - overlap if c else n)
        left = size // 2 - c if c else (size - n) // 2
    else:
        size, left = n, 0
    pre = homodyne(size, overlap, c > n // 2 and c > 0, kind)
    if options & 1:
        pre = pre * chop_signs(size)
    return transform(a, axis, size, left, options & 2, pre, False)


def window(a, kind):
    out = a.astype(np.complex128)
    for axis, n in enumerate(a.shape):
        out = out * along(WINDOWS[kind](n, sym=True), axis, a.ndim)
    return out


def base(axis, n, c, lo):
    if n == 1:
        return np.ones(1)
    i = np.arange(n)
    c = F32(c)
    with np.errstate(divide="ignore", invalid="ignore"):
        if lo:
            t = ((i - (n - 1) / 2.0) * np.pi).astype(F32)
            w = np.sin(c * t) / t
            return np.where(t == 0, c, w)
        t = (i.astype(F32) - F32(n - 1) / F32(2)) * F32(np.pi)
        if axis < 2:
            w = (np.sin(t) - np.sin(c * t)) / t
        else:
            w = (np.sin(t) / t - np.sin(c * t)) / t
        return np.where(t == 0, -c, w)


def kernel(kind, dirs, c, points, lo):
    shape = [points if d in dirs else 1 for d in AXES]
    out = np.ones(shape)
    for axis, n in enumerate(shape):
        out = out * along(base(axis, n, c, lo) * WINDOWS[kind](n, sym=True), axis, 6)
    return out


def interp(a, dirs, m):
    for d in sorted(dirs, key=AXES.index):
        axis = AXES.index(d)
        n = a.shape[axis]
        x = np.linspace(0, n - 1, m) if m > 1 else np.zeros(1)
        line = lambda v: np.interp(x, np.arange(n), v)
        a = (np.apply_along_axis(line, axis, a.real.astype(float)) +
             1j * np.apply_along_axis(line, axis, a.imag.astype(float)))
    return a


def compute(arrays, op, args):
    if op == "kernel":
        return kernel(args[0], args[1], float(args[2]), int(args[3]), int(args[4]))
    a = arrays[args[0]].astype(np.complex64)
    if op in ("ft", "mrft"):
        return ft(a, args[1], *(int(v) for v in args[2:5]), op == "ft")
    if op == "pnft":
        return pnft(a, args[1], int(args[2]), int(args[3]), int(args[4]))
    if op == "window":
        return window(a, args[1])
    if op == "interp":
        return interp(a, args[1], int(args[2]))
    raise ValueError(op)


if __name__ == "__main__":
    peer.run(lambda arrays, op, args: compute(arrays, op, args).astype(np.complex64))
