"""Peer of bench_lfe, with NumPy's FFT on the same 128 x 80 x 25 acquisition (three components
alike, eight offsets of a wave along x and z at 2 m/s, 60 Hz), built from the same formula.

  lfe_numpy.py bank    seconds of the lognormal filter bank and the combination on the three
                       harmonic pairs, 3-D, then slice by slice
  lfe_numpy.py stages  seconds of the harmonic (fft along t) and of a stack-mode direction
                       filter (fftn per offset, fft along t, filter, and back)

Each figure is the best of a few runs; one number per line.
"""
import sys
import time

import numpy as np

NX, NY, NZ, NT = 128, 80, 25, 8
DX, FREQ, SPEED = 0.002, 60.0, 2.0
NBANDS, BASE = 6, 4.0


def offsets():
    k = FREQ / SPEED
    z, y, x = np.meshgrid(np.arange(NZ), np.arange(NY), np.arange(NX), indexing="ij")
    phi = 2 * np.pi * k * DX * (0.8 * x + 0.6 * z)
    t = np.arange(NT).reshape(NT, 1, 1, 1)
    return np.cos(phi[None] - 2 * np.pi * t / NT).astype(np.float32)


def harmonic(stack):
    return (2.0 / NT) * np.fft.fft(stack, axis=0)[1]


def folded(n):
    i = np.arange(n)
    return np.minimum(i, n - i)


def bank_filters(shape, fovs, f):
    grids = np.meshgrid(*[folded(n) / fv for n, fv in zip(shape, fovs)], indexing="ij")
    idx = np.meshgrid(*[np.arange(n) for n in shape], indexing="ij")
    rho2 = sum(g * g for g in grids)
    with np.errstate(divide="ignore", invalid="ignore"):
        L = np.log(rho2 / (f * f))
        rad = np.where(rho2 > 0, np.exp(-L * L * 0.125 / np.log(2.0)), 0.0)
        out = []
        for ax in range(len(shape)):
            w = np.where(rho2 > 0, grids[ax] ** 2 / rho2, 0.0)
            out.append(np.where(idx[ax] <= shape[ax] // 2, rad * w, 0.0))
    return out


def estimate(img, fovs):
    spec = np.fft.fftn(img)
    q = []
    f = BASE
    for _ in range(NBANDS):
        q.append(sum(np.abs(np.fft.ifftn(spec * h)) for h in bank_filters(img.shape, fovs, f)))
        f *= 2
    q = np.array(q)
    fb = BASE * np.sqrt(2) * 2.0 ** np.arange(NBANDS - 1)
    with np.errstate(divide="ignore", invalid="ignore"):
        num = sum(fb[b] * q[b] * q[b + 1] for b in range(NBANDS - 1))
        den = sum(q[b] ** 2 for b in range(NBANDS - 1))
        est = num / den
        dev = sum(q[b] ** 2 * (fb[b] * q[b + 1] / q[b] - est) ** 2
                  for b in range(NBANDS - 1)) / den
        cert = 1 - np.minimum(1, np.sqrt(dev) / est)
    return est, cert


def weighted(pairs, run):
    """Three pairs, each the RMS of its R and I estimates, averaged by squared amplitude."""
    se = sc = sw = 0
    for pr in pairs:
        er, cr = run(pr.real)
        ei, ci = run(pr.imag)
        w = np.abs(pr) ** 2
        se = se + w * (er * er + ei * ei) / 2
        sc = sc + w * (cr * cr + ci * ci) / 2
        sw = sw + w
    return np.sqrt(se / sw), np.sqrt(sc / sw)


def best(f, reps=3):
    b = float("inf")
    for _ in range(reps):
        t0 = time.perf_counter()
        f()
        b = min(b, time.perf_counter() - t0)
    return b


def main():
    stack = offsets()
    fovs3 = (NZ * DX, NY * DX, NX * DX)
    if sys.argv[1] == "bank":
        pairs = [harmonic(stack)] * 3
        full = best(lambda: weighted(pairs, lambda im: estimate(im, fovs3)), 2)

        def slices(im):
            parts = [estimate(im[z], fovs3[1:]) for z in range(NZ)]
            return np.array([p[0] for p in parts]), np.array([p[1] for p in parts])

        sliced = best(lambda: weighted(pairs, slices), 2)
        print(f"{full:.4f}\n{sliced:.4f}")
    else:
        h = best(lambda: harmonic(stack))

        def direction():
            spec = np.fft.fft(np.fft.fftn(stack, axes=(1, 2, 3)), axis=0)
            spec[0] = 0
            spec[NT // 2] = 0
            spec *= 0.5
            return np.real(np.fft.ifftn(np.fft.ifft(spec, axis=0), axes=(1, 2, 3)))

        d = best(direction)
        print(f"{h:.4f}\n{d:.4f}")


if __name__ == "__main__":
    main()
