"""Reference results of the matrix operators with NumPy.

Usage: matrix_check.py DIR. DIR/cases.txt holds one case a line:
    "id op p q thresh dtype_a [dtype_b]"
with op one of mul, div, minv, diag, trace and p, q the directions of the matrix plane (0 ... 5;
rows along p, columns along q). The operands are DIR/id_a.bin and DIR/id_b.bin (Fortran order)
with six resolutions in DIR/id_a.shape and DIR/id_b.shape. For each case this writes the result
as complex128 in DIR/id.bin (Fortran order) and its six resolutions in DIR/id.shape.
"""
import sys

import numpy as np


def load(folder, name, dtype):
    shape = tuple(int(v) for v in open(f"{folder}/{name}.shape").read().split())
    return np.fromfile(f"{folder}/{name}.bin", dtype=dtype).reshape(shape, order="F")


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


def main(folder):
    for line in open(f"{folder}/cases.txt"):
        fields = line.split()
        if not fields:
            continue
        case, op, p, q, thresh = fields[0], fields[1], int(fields[2]), int(fields[3]), float(fields[4])
        a = load(folder, f"{case}_a", np.dtype(fields[5]))
        b = load(folder, f"{case}_b", np.dtype(fields[6])) if len(fields) > 6 else None
        out = np.asarray(compute(op, p, q, thresh, a, b), dtype=np.complex128)
        out.reshape(-1, order="F").tofile(f"{folder}/{case}.bin")
        with open(f"{folder}/{case}.shape", "w") as f:
            f.write(" ".join(str(v) for v in out.shape))


if __name__ == "__main__":
    main(sys.argv[1])
