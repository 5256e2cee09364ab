"""Peer of bench_transform: scipy.fft.fft2 on complex64 arrays of the benchmark's shapes.

Prints the best time of a few repeats, in milliseconds, for 64 x 256 x 256 and 64 x 250 x 250
(C order: the last two axes are y and x, as in the benchmark's x-fastest arrays).
"""
import time

import numpy as np
import scipy.fft


def best_ms(a, repeats=7):
    scipy.fft.fft2(a)  # first call sets up pocketfft's plan
    best = float("inf")
    for _ in range(repeats):
        t0 = time.perf_counter()
        scipy.fft.fft2(a)
        best = min(best, time.perf_counter() - t0)
    return best * 1e3


def main():
    rng = np.random.default_rng(7)
    times = []
    for n in (256, 250):
        a = (rng.standard_normal((64, n, n)) + 1j * rng.standard_normal((64, n, n)))
        times.append(best_ms(a.astype(np.complex64)))
    print(" ".join(f"{t:.3f}" for t in times))


if __name__ == "__main__":
    main()
