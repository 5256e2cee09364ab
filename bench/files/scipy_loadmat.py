"""Writes a 100 MB float32 array to a compressed version 7 MAT file with scipy.io.savemat and
times scipy.io.loadmat on it.

    scipy_loadmat.py PATH

Prints one line: milliseconds per loadmat, best of three.
"""
import sys
import time

import numpy as np
import scipy.io as sio

path = sys.argv[1]
# A wave field with noise, as a phase series looks: it packs as such data packs.
x = np.linspace(0, 40 * np.pi, 5000, dtype=np.float32)
rng = np.random.default_rng(3)
wave = (np.sin(x)[:, None] * np.cos(0.7 * x)[None, :]).astype(np.float32)
wave += rng.standard_normal(wave.shape, dtype=np.float32) * np.float32(0.01)
sio.savemat(path, {"wave": wave}, do_compression=True)

times = []
for _ in range(3):
    start = time.perf_counter()
    sio.loadmat(path)
    times.append(time.perf_counter() - start)
print(min(times) * 1e3)
