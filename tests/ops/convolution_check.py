"""Reference results of the convolution and median operators from NumPy and SciPy.

Usage: convolution_check.py DIR, with the inputs and the case lines "id op args..." in DIR
(see peer.py). Inputs are taken as float64, or complex128 when complex; each result is
complex128 when complex, else float64.
"""
import numpy as np
import scipy.ndimage as ndi
import scipy.signal as sig

import peer


def circular(a, k):
    # out[i] = sum over j of a[(i + j) mod n] * k[j], in every direction at once.
    out = np.zeros(a.shape, dtype=np.result_type(a, k))
    for j in np.ndindex(k.shape):
        out += k[j] * np.roll(a, [-v for v in j], axis=tuple(range(a.ndim)))
    return out


def along(a, k, axis, circ, square):
    n, m = a.shape[axis], k.shape[axis]
    if circ:
        size = max(n, m)
        a = pad_to(a, axis, size)
        if square:
            k = pad_to(k, axis, size)
            m = size
        shifted = lambda j: np.roll(a, -j, axis=axis)
    else:
        size = n - m + 1
        shifted = lambda j: np.take(a, np.arange(j, j + size), axis=axis)
    out = 0
    for j in range(m):
        kj = np.take(k, [j], axis=axis)
        out = out + (np.abs(shifted(j) - kj) ** 2 if square else shifted(j) * kj)
    return out


def pad_to(a, axis, size):
    widths = [(0, 0)] * a.ndim
    widths[axis] = (0, size - a.shape[axis])
    return np.pad(a, widths)


def order(a, axis):
    # By the i channel, NaN last, equal keys in storage order.
    return np.argsort(a.real, axis=axis, kind="stable")


def extreme(a, circ, size, fn):
    if np.iscomplexobj(a):
        return extreme(a.real, circ, size, fn) + 1j * extreme(a.imag, circ, size, fn)
    out = fn(a, size=size, mode="wrap")
    if circ:
        return out
    index = tuple(slice(w // 2, w // 2 + n - w + 1) for n, w in zip(a.shape, size))
    return out[index]


def window_pick(a, key, size):
    # Every wrapped window as a stack, ordered by i, q, magnitude or phase; the middle one.
    offsets = [[i - w // 2 for i, w in zip(index, size)] for index in np.ndindex(*size)]
    axes = tuple(range(a.ndim))
    stack = np.stack([np.roll(a, [-v for v in off], axis=axes) for off in offsets])
    keys = [stack.real, stack.imag, np.abs(stack), np.angle(stack)][key]
    pick = np.argsort(keys, axis=0, kind="stable")[len(stack) // 2]
    return np.take_along_axis(stack, pick[None], axis=0)[0]


def compute(arrays, op, args):
    def get(name):
        a = arrays[name]
        return a.astype(np.complex128 if np.iscomplexobj(a) else np.float64)

    if op in ("conv", "corr"):
        a, k = get(args[0]), get(args[1])
        if op == "conv":
            return sig.convolve(a, k, mode="valid", method="direct")
        # correlate conjugates its second input; ours does not.
        return sig.correlate(a, np.conj(k), mode="valid", method="direct")
    if op in ("cconv", "ccorr"):
        a, k = get(args[0]), get(args[1])
        return circular(a, np.flip(k) if op == "cconv" else k)
    if op in ("corr1d", "ccorr1d", "ssd", "cssd"):
        axis, a, k = int(args[0]), get(args[1]), get(args[2])
        return along(a, k, axis, op in ("ccorr1d", "cssd"), op.endswith("ssd"))
    if op in ("median", "sort"):
        axis, a = int(args[0]), get(args[1])
        s = np.take_along_axis(a, order(a, axis), axis=axis)
        if op == "sort":
            return s
        return np.take(s, [a.shape[axis] // 2], axis=axis)
    if op == "cmedian":
        a, size = get(args[0]), [int(v) for v in args[1:]]
        return ndi.median_filter(a, size=size + [1] * (a.ndim - len(size)), mode="wrap")
    if op == "cmediankey":
        a, key, size = get(args[0]), int(args[1]), [int(v) for v in args[2:]]
        return window_pick(a, key, size + [1] * (a.ndim - len(size)))
    if op in ("dilate", "erode"):
        a, circ = get(args[0]), args[1] == "1"
        size = [int(v) for v in args[2:]]
        size += [1] * (a.ndim - len(size))
        fn = ndi.minimum_filter if op == "dilate" else ndi.maximum_filter
        return extreme(a, circ, size, fn)
    raise ValueError(op)


def reference(arrays, op, args):
    out = np.asarray(compute(arrays, op, args))
    return out.astype(np.complex128 if np.iscomplexobj(out) else np.float64)


if __name__ == "__main__":
    peer.run(reference)
