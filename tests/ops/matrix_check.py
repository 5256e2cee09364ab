"""Reference results of the matrix operators with NumPy.

Usage: matrix_check.py DIR, with the operands and the case lines in DIR (see peer.py):
    "id op p q thresh a [b]"
with op one of mul, div, minv, diag, trace, p and q the directions of the matrix plane (0 ... 5;
rows along p, columns along q) and a, b the names of the operands. Each result is complex128.
"""
import numpy as np

import peer


def to_plane(a, p, q):
    """The stack with the matrix plane last: rows along p, columns along q."""
    return np.moveaxis(a, (p, q), (-2, -1))


def from_plane(a, p, q):
    return np.moveaxis(a, (-2, -1), (p, q))


def compute(op, p, q, thresh, a, b):
    if op == "mul":
        return from_plane(np.matmul(to_plane(a, p, q), to_plane(b, p, q)), p, q)
    if op == "div":
        inv = np.linalg.pinv(to_plane(b, p, q).astype(np.complex128))
        return from_plane(np.matmul(to_plane(a, p, q), inv), p, q)
    if op == "minv":
        return from_plane(np.linalg.pinv(to_plane(a, p, q), rcond=thresh), p, q)
    if op == "diag":
        m = to_plane(a, p, q)
        if m.shape[-1] == m.shape[-2]:
            out = np.diagonal(m, axis1=-2, axis2=-1)[..., None]
        else:
            out = np.zeros(m.shape[:-1] + (m.shape[-2],), m.dtype)
            idx = np.arange(m.shape[-2])
            out[..., idx, idx] = m[..., :, 0]
        return from_plane(out, p, q)
    if op == "trace":
        t = np.trace(to_plane(a, p, q), axis1=-2, axis2=-1)
        return from_plane(t[..., None, None], p, q)
    raise ValueError(op)


def reference(arrays, op, args):
    p, q, thresh = int(args[0]), int(args[1]), float(args[2])
    b = arrays[args[4]] if len(args) > 4 else None
    return np.asarray(compute(op, p, q, thresh, arrays[args[3]], b), dtype=np.complex128)


if __name__ == "__main__":
    peer.run(reference)
