"""Peer of bench_nifti: writes a 256 x 256 x 64 x 8 float32 volume with nibabel, plain and
gzipped, into FOLDER, then times np.asanyarray(nib.load(f, mmap=False).dataobj) on each and
prints the best of a few runs in milliseconds, plain first. The memory map is off because a
mapped array reads nothing until it is touched.

    nibabel_load.py FOLDER
"""
import sys
import time

import nibabel as nib
import numpy as np


def main():
    folder = sys.argv[1]
    rng = np.random.default_rng(11)
    x = np.linspace(0, 8 * np.pi, 256, dtype=np.float32)
    wave = np.sin(x)[:, None, None, None] * np.cos(x)[None, :, None, None]
    a = (wave * np.ones((1, 1, 64, 8), np.float32) * 1000).astype(np.float32)
    a += rng.normal(0, 5, a.shape).astype(np.float32)
    figures = []
    for name in ("wave.nii", "wave.nii.gz"):
        path = f"{folder}/{name}"
        nib.save(nib.Nifti1Image(a, np.eye(4)), path)
        np.asanyarray(nib.load(path, mmap=False).dataobj)
        best = float("inf")
        for _ in range(3):
            t0 = time.perf_counter()
            np.asanyarray(nib.load(path, mmap=False).dataobj)
            best = min(best, time.perf_counter() - t0)
        figures.append(best * 1e3)
    print(" ".join(f"{f:.3f}" for f in figures))


if __name__ == "__main__":
    main()
