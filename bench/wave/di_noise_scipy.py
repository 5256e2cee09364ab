"""Peer of bench_inversion's accuracy table: direct inversion with Savitzky-Golay kernels
written with SciPy alone (savgol_coeffs, correlate1d with zero padding) on the same noisy
plane waves, 160 x 64 px of 1 mm at 60 Hz with 0.1 rad of phase noise: U = S u,
L = D2x Sy + Sx D2y, G = -U conj(L) / |L|^2, speed^2 = 2 w^2 |G|^2 / (|G| + Re G). Prints
the signed error of the median speed^2 in % for SG 7 order 5, then SG 11 order 3, at 11, 16,
22, 33 and 44 px per wavelength (the mean of four noise draws).
"""
import numpy as np
import scipy.ndimage as ndi
import scipy.signal as ss

NX, NY, FREQ, DX, SIGMA = 160, 64, 60.0, 0.001, 0.1


def corr(a, k, axis):
    return (ndi.correlate1d(a.real, k, axis=axis, mode="constant")
            + 1j * ndi.correlate1d(a.imag, k, axis=axis, mode="constant"))


def error(win, order, lam, rng):
    s = ss.savgol_coeffs(win, order, deriv=0, use="dot")
    d2 = ss.savgol_coeffs(win, order, deriv=2, delta=DX, use="dot")
    w = 2 * np.pi * FREQ
    want = (FREQ * lam * DX) ** 2
    errs = []
    for _ in range(4):
        x = np.broadcast_to(np.arange(NX), (NY, NX))
        u = np.exp(1j * (2 * np.pi * x / lam + SIGMA * rng.standard_normal((NY, NX))))
        U = corr(corr(u, s, 1), s, 0)
        L = corr(corr(u, d2, 1), s, 0) + corr(corr(u, s, 1), d2, 0)
        G = -U * np.conj(L) / np.abs(L) ** 2
        m = np.abs(G)
        h2 = m + G.real
        s2 = np.where(h2 > 0, 2 * w * w * m * m / np.where(h2 > 0, h2, 1), 0)
        errs.append(100 * (np.median(s2[win:-win, win:-win]) - want) / want)
    return np.mean(errs)


rng = np.random.default_rng(4)
print(" ".join("%.2f" % error(win, order, lam, rng)
               for win, order in ((7, 5), (11, 3)) for lam in (11, 16, 22, 33, 44)))
