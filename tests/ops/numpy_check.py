"""Computes the reference results of the structural operators with NumPy.

Usage: numpy_check.py DIR, with the arrays a and b and the case lines "id op args..." in DIR
(see peer.py). Each result keeps the element type of a.
"""
import numpy as np

import peer

AXES = "xyzt"


def pad(a, axis, n, symmetric):
    old = a.shape[axis]
    lo = (n - old) // 2 if symmetric else 0
    widths = [(0, 0)] * a.ndim
    widths[axis] = (lo, n - old - lo)
    return np.pad(a, widths)


def compute(a, b, op, args):
    ax = lambda s: AXES.index(s)
    if op == "flip":
        return np.flip(a, ax(args[0]))
    if op == "shift":
        return np.roll(a, int(args[1]), ax(args[0]))
    if op == "permute":
        order = [ax(c) for c in args[0]]
        order += [k for k in range(a.ndim) if k not in order]
        return np.transpose(a, order)
    if op == "trans":
        order = list(range(a.ndim))
        i, j = sorted(ax(c) for c in args[0])
        order[i], order[j] = order[j], order[i]
        return np.transpose(a, order)
    if op == "rotxy":
        return np.rot90(a, 1, axes=(0, 1))
    if op == "rotmxy":
        return np.rot90(a, -1, axes=(0, 1))
    if op == "pad":
        return pad(a, ax(args[0]), int(args[1]), False)
    if op == "padsim":
        return pad(a, ax(args[0]), int(args[1]), True)
    if op == "cut":
        index = [slice(None)] * a.ndim
        index[ax(args[0])] = slice(int(args[1]), int(args[2]) + 1)
        return a[tuple(index)]
    if op == "cat":
        return np.concatenate((a, b), ax(args[0]))
    if op == "reshape":
        shape = tuple(int(v) for v in args)
        return a.reshape(-1, order="F")[: int(np.prod(shape))].reshape(shape, order="F")
    if op == "tile":
        axis, n = ax(args[0]), int(args[1])
        reps = [1] * a.ndim
        reps[axis] = -(-n // a.shape[axis])
        index = [slice(None)] * a.ndim
        index[axis] = slice(0, n)
        return np.tile(a, reps)[tuple(index)]
    raise ValueError(op)


if __name__ == "__main__":
    peer.run(lambda arrays, op, args: np.asarray(
        compute(arrays["a"], arrays["b"], op, args), dtype=arrays["a"].dtype))
