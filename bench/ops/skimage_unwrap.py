"""Peer of bench_unwrap: scikit-image's unwrap_phase on the same wrapped data.

Usage: skimage_unwrap.py DIR. DIR/cases.txt has one line per case, "NAME NX NY NZ"; NAME.bin
holds the wrapped phase in radians as float32, x fastest. For each case this writes
NAME.out.bin (float64, x fastest) and prints the seconds of one call, timed with
time.perf_counter.
"""
import sys
import time

import numpy as np
from skimage.restoration import unwrap_phase


def main(folder):
    for line in open(f"{folder}/cases.txt"):
        name, nx, ny, nz = line.split()
        shape = (int(nz), int(ny), int(nx)) if int(nz) > 1 else (int(ny), int(nx))
        wrapped = np.fromfile(f"{folder}/{name}.bin", dtype=np.float32).reshape(shape)
        wrapped = wrapped.astype(np.float64)
        start = time.perf_counter()
        out = unwrap_phase(wrapped)
        seconds = time.perf_counter() - start
        np.ascontiguousarray(out, dtype=np.float64).tofile(f"{folder}/{name}.out.bin")
        print(f"{seconds:.6f}", flush=True)


if __name__ == "__main__":
    main(sys.argv[1])
