"""Peer timing for bench_convolution: scipy.signal.convolve2d, mode 'valid' (a direct sum).

Usage: scipy_convolution.py DIR. DIR holds image.bin (512 x 512 float32) and kernel.bin
(7 x 7 float32), both stored x fastest. Prints the milliseconds per call: the best of five
rounds, each the mean of ten calls, timed with time.perf_counter.
"""
import sys
import time

import numpy as np
import scipy.signal as sig


def main(folder):
    image = np.fromfile(f"{folder}/image.bin", dtype=np.float32).reshape(512, 512)
    kernel = np.fromfile(f"{folder}/kernel.bin", dtype=np.float32).reshape(7, 7)
    sig.convolve2d(image, kernel, mode="valid")
    best = float("inf")
    for _ in range(5):
        start = time.perf_counter()
        for _ in range(10):
            sig.convolve2d(image, kernel, mode="valid")
        best = min(best, (time.perf_counter() - start) / 10)
    print(f"{best * 1e3:.4f}")


if __name__ == "__main__":
    main(sys.argv[1])
