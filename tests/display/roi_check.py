"""Reference figures of the region tests (tests/display/roi_stats_test.cpp).

Cases (see peer.py):
  stats A M CH     mean, population sd of the finite values of channel CH (0 i, 1 q,
                   2 magnitude, 3 phase) of plane A under mask M, and the count of M
  poly NX NY X.. Y..
                   skimage.draw.polygon of the points at NX x NY (x first), uint8 with 2 on
                   pixels whose centre lies on an edge
"""
import numpy as np
from skimage.draw import polygon

import peer

CHANNELS = [np.real, np.imag, np.abs, np.angle]


def stats(a, m, ch):
    v = CHANNELS[ch](a.astype(np.complex128))[m != 0]
    v = v[np.isfinite(v)]
    if v.size == 0:
        return np.array([0.0, 0.0, float((m != 0).sum())])
    return np.array([v.mean(), v.std(), float((m != 0).sum())])


def on_edge(xs, ys, nx, ny):
    out = np.zeros((nx, ny), bool)
    gx, gy = np.meshgrid(np.arange(nx), np.arange(ny), indexing="ij")
    n = len(xs)
    for k in range(n):
        x0, y0, x1, y1 = xs[k], ys[k], xs[(k + 1) % n], ys[(k + 1) % n]
        cross = (x1 - x0) * (gy - y0) - (y1 - y0) * (gx - x0)
        inside = (np.minimum(x0, x1) <= gx) & (gx <= np.maximum(x0, x1)) & \
                 (np.minimum(y0, y1) <= gy) & (gy <= np.maximum(y0, y1))
        out |= (cross == 0) & inside
    return out


def compute(arrays, op, args):
    if op == "stats":
        a, m = arrays[args[0]], arrays[args[1]]
        return stats(a.reshape(a.shape[:2]), m.reshape(m.shape[:2]), int(args[2]))
    if op == "poly":
        nx, ny = int(args[0]), int(args[1])
        pts = [float(v) for v in args[2:]]
        xs, ys = pts[: len(pts) // 2], pts[len(pts) // 2:]
        rr, cc = polygon(ys, xs, shape=(ny, nx))
        mask = np.zeros((nx, ny), np.uint8)
        mask[cc, rr] = 1
        mask[on_edge(xs, ys, nx, ny)] = 2
        return mask
    raise ValueError(op)


peer.run(compute)
