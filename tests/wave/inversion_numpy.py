"""NumPy/SciPy side of the inversion tests: separable and 2-D correlations with zero padding,
and direct inversion written from the Helmholtz ratio with SciPy's correlate1d.

Arrays come x first (peer.py): axis 0 is x, axis 1 is y. Kernels are correlation weights
centred on the pixel.
"""
import numpy as np
import scipy.ndimage as ndi

import peer


def sep(img, kx, ky, sx=1.0, sy=1.0):
    out = ndi.correlate1d(img.astype(np.float64), kx.astype(np.float64), axis=0, mode="constant")
    out *= sx
    out = ndi.correlate1d(out, ky.astype(np.float64), axis=1, mode="constant")
    return out * sy


def lower_median(v):
    v = v[np.isfinite(v)]
    if v.size == 0:
        return 0.0
    k = (v.size - 1) // 2
    return np.partition(v, k)[k]


def direct(a, args):
    """re im sx sy d2x d2y px py regular w mask_or_none romano: cmu (re, im planes) and speed2."""
    re, im = a[args[0]], a[args[1]]
    sx, sy, dx, dy = (a[n] for n in args[2:6])
    px, py, regular, w = (float(v) for v in args[6:10])
    mask = None if args[10] == "none" else a[args[10]] != 0
    romano = args[11] == "1"
    us = sep(re, sx, sy) + 1j * sep(im, sx, sy)
    if romano:
        lap3 = np.array([1.0, -2.0, 1.0])
        ur, ui = us.real, us.imag
        lap = lambda u: (ndi.correlate1d(u, lap3, axis=0, mode="constant") / px**2
                         + ndi.correlate1d(u, lap3, axis=1, mode="constant") / py**2)
        L = lap(ur) + 1j * lap(ui)
    else:
        lap = lambda u: sep(u, dx, sy, 1 / px**2) + sep(u, sx, dy, 1.0, 1 / py**2)
        L = lap(re) + 1j * lap(im)
    den2 = np.abs(L) ** 2
    reg = 0.0
    if regular > 1e-7:
        reg = lower_median(den2[mask] if mask is not None else den2.ravel()) * regular
    d = den2 + reg
    G = np.where(d > 1e-7, -us * np.conj(L) / np.where(d > 1e-7, d, 1.0), 0.0)
    m = np.abs(G)
    ok = (m > 0) & (m + G.real > 0)
    h = np.sqrt(np.where(ok, m + G.real, 1.0))
    speed2 = np.where(ok, (m * np.sqrt(2) * w / h) ** 2, 0.0)
    return np.stack([(G.real * w * w), (G.imag * w * w), speed2], axis=-1).astype(np.float32)


def phase_slopes(phase, hx, hy, dx, dy):
    """Per pixel, rows (and columns) of the window unwrapped with numpy.unwrap, a line fitted
    by numpy.polyfit, slopes averaged with the sums of the Gaussian weights of each row."""
    nx, ny = phase.shape
    g = lambda h: np.exp(-((np.arange(2 * h + 1) - h) ** 2) / (2 * (0.25 * (2 * h + 1)) ** 2))
    gx, gy = g(hx), g(hy)
    out = np.zeros((nx, ny, 2))
    for x in range(nx):
        for y in range(ny):
            x0, x1, y0, y1 = max(x - hx, 0), min(x + hx, nx - 1), max(y - hy, 0), min(y + hy, ny - 1)
            for axis in (0, 1):
                S = W = 0.0
                lines = range(y0, y1 + 1) if axis == 0 else range(x0, x1 + 1)
                for l in lines:
                    if axis == 0:
                        ph, pos = phase[x0:x1 + 1, l], np.arange(x0, x1 + 1) * dx
                        w = gx[x0 - x + hx:x1 - x + hx + 1] * gy[l - y + hy]
                    else:
                        ph, pos = phase[l, y0:y1 + 1], np.arange(y0, y1 + 1) * dy
                        w = gy[y0 - y + hy:y1 - y + hy + 1] * gx[l - x + hx]
                    if len(ph) > 1:
                        S += np.polyfit(pos, np.unwrap(ph.astype(np.float64)), 1)[0] * w.sum()
                        W += w.sum()
                out[x, y, axis] = S / W
    return out


def compute(a, op, args):
    if op == "sep":
        return sep(a[args[0]], a[args[1]], a[args[2]]).astype(np.float32)
    if op == "sepsum":  # the two axes filtered from the input and added
        img, kx, ky = a[args[0]], a[args[1]], a[args[2]]
        one = np.array([1.0])
        return (sep(img, kx, one) + sep(img, one, ky)).astype(np.float32)
    if op == "nonsep":  # kernel saved x first as (win x, win y)
        return ndi.correlate(a[args[0]].astype(np.float64), a[args[1]].astype(np.float64),
                             mode="constant").astype(np.float32)
    if op == "pg":  # phase hx hy dx dy: est = |slope| / (2 pi)
        s = phase_slopes(a[args[0]], int(args[1]), int(args[2]), float(args[3]), float(args[4]))
        return (np.hypot(s[..., 0], s[..., 1]) / (2 * np.pi)).astype(np.float32)
    if op == "direct":
        return direct(a, args)
    raise ValueError(op)


peer.run(compute)
