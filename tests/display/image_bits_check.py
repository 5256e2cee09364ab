"""Palette indices written from the window/level rules, for the pixel pipeline's cross check.

Case lines: "id index A wscale nonlin cycles inv window level [WC LC]". Arithmetic is float32
up to the clamp and float64 after it; WC and LC are per-pixel window and level arrays read at
(column, row) clamped to their sizes.
"""
import numpy as np
import peer

f32 = np.float32


def companion(c, shape):
    cols = np.minimum(np.arange(shape[0]), c.shape[0] - 1)
    rows = np.minimum(np.arange(shape[1]), (c.shape[1] if c.ndim > 1 else 1) - 1)
    c2 = c.reshape(c.shape[0], -1)
    return c2[cols[:, None], rows[None, :]].astype(f32)


def index(arrays, a, wscale, nonlin, cycles, inv, window, level, wc=None, lc=None):
    x = arrays[a]
    x = x.reshape(x.shape[0], x.shape[1] if x.ndim > 1 else 1).astype(f32)
    w = companion(arrays[wc], x.shape) if wc else f32(window)
    l = companion(arrays[lc], x.shape) if lc else f32(level)
    n = f32(nonlin)
    with np.errstate(all="ignore"):
        if wscale == 0:
            span = f32(cycles * 256 if cycles >= 2 else 256)
            t = ((x - l) / w + f32(0.5)) * span
            t = np.where(t > 0, t, f32(0))
            t = np.where(t < 255, t, f32(255)).astype(f32)
            i = np.floor(t.astype(np.float64) + 0.5).astype(np.int64)
            if cycles >= 2:
                i = np.minimum(i, cycles * 256 - 1) & 255
        elif wscale == 1:
            t = (x - l) * (n - f32(1)) / w + (n * f32(0.5) + f32(0.5))
            t = np.where(t > 1, t, f32(1))
            t = np.where(t < n, t, n).astype(np.float64)
            i = np.trunc(np.log(t) * 255.999 / np.log(np.float64(n))).astype(np.int64) & 255
        else:
            t = (x - l) * n / w + n * f32(0.5)
            t = np.where(t > 0, t, f32(0))
            t = np.where(t < n, t, n).astype(np.float64)
            i = np.trunc((np.exp(t) - 1) * 255.999 / (np.exp(np.float64(n)) - 1)).astype(np.int64) & 255
    if inv:
        i = 255 - i
    return i.astype(np.uint8)


def compute(arrays, op, args):
    if op != "index":
        raise ValueError(op)
    a, wscale, nonlin, cycles, inv, window, level = args[:7]
    extra = args[7:] + [None, None]
    return index(arrays, a, int(wscale), float(nonlin), int(cycles), int(inv), float(window),
                 float(level), extra[0], extra[1])


peer.run(compute)
